#include "readers/CursorConnection.hpp"

#include "base/SqliteFileUri.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace tallowen {
namespace {

// SQLite's own back-off for busy waits: short first, then steady.
constexpr std::array<int, 12> waitStepsMilliseconds = {1, 2, 5, 10, 15, 20, 25, 25, 25, 50, 50, 100};

// Bytes 18 and 19 of the header, the file format's write and read versions, are 2 in WAL mode.
bool isInWalMode(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) return false;
    unsigned char header[20] = {};
    const bool complete = ::pread(fd, header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
    ::close(fd);
    return complete && header[18] == 2 && header[19] == 2;
}

bool exists(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

int waitForLock(void* budget, int attempt) { return static_cast<LockWaitBudget*>(budget)->waitOnce(attempt) ? 1 : 0; }

}  // namespace

LockWaitBudget::LockWaitBudget(std::chrono::milliseconds total, Sleep sleep)
    : remaining_(total), sleep_(std::move(sleep)) {
    if (!sleep_) sleep_ = [](std::chrono::milliseconds span) { std::this_thread::sleep_for(span); };
}

bool LockWaitBudget::waitOnce(int attempt) {
    if (remaining_.count() <= 0) return false;
    const size_t step = std::min<size_t>(static_cast<size_t>(std::max(attempt, 0)), waitStepsMilliseconds.size() - 1);
    const auto span = std::min(remaining_, std::chrono::milliseconds(waitStepsMilliseconds[step]));
    sleep_(span);
    remaining_ -= span;
    return true;
}

std::optional<SqliteConnection> openCursorDatabase(const std::filesystem::path& path, LockWaitBudget& budget) {
    const std::string walPath = path.string() + "-wal";
    const std::string sharedMemoryPath = path.string() + "-shm";
    const bool idleWal = isInWalMode(path) && !(exists(walPath) && exists(sharedMemoryPath));
    auto connection = SqliteConnection::open(sqliteFileUri(path, idleWal ? "mode=ro&immutable=1" : "mode=ro"),
                                             SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    if (connection) sqlite3_busy_handler(connection->handle(), waitForLock, &budget);
    return connection;
}

}  // namespace tallowen
