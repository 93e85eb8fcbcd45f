#include "readers/WindowedLogFile.hpp"

#include "readers/TornReadGuard.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace tallowen {
namespace {

size_t pageBytes() {
    static const auto bytes = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    return bytes;
}

// One stretch of the file mapped read-only, unmapped when it goes.
class Window {
public:
    // `offset` must be a multiple of the page size.
    Window(int fd, uint64_t offset, size_t length, bool readAhead) : length_(length) {
        int flags = MAP_PRIVATE;
#if defined(MAP_POPULATE)
        // The whole window is about to be read: fill it in one call instead of
        // taking a fault every few pages.
        if (readAhead) flags |= MAP_POPULATE;
#endif
        void* address = ::mmap(nullptr, length, PROT_READ, flags, fd, static_cast<off_t>(offset));
        if (address == MAP_FAILED) return;
        address_ = static_cast<const char*>(address);
        if (readAhead) ::madvise(address, length, MADV_SEQUENTIAL);
    }
    ~Window() {
        if (address_ != nullptr) ::munmap(const_cast<char*>(address_), length_);
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    bool mapped() const { return address_ != nullptr; }
    const char* data() const { return address_; }
    size_t length() const { return length_; }

private:
    const char* address_ = nullptr;
    size_t length_ = 0;
};

// Where the last line feed of `bytes` is, or nothing.
const char* lastLineFeed(const char* start, size_t length) {
#if defined(__GLIBC__)
    return static_cast<const char*>(::memrchr(start, '\n', length));
#else
    for (const char* cursor = start + length; cursor != start;)
        if (*--cursor == '\n') return cursor;
    return nullptr;
#endif
}

}  // namespace

std::optional<WindowedLogFile> WindowedLogFile::open(const std::filesystem::path& path, size_t windowBytes) {
    // Non-blocking so that a fifo given a log's name cannot hang the scan.
    int fd = -1;
    do {
        fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return std::nullopt;

    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        ::close(fd);
        return std::nullopt;
    }
    const size_t page = pageBytes();
    const size_t window = std::max(page, (windowBytes + page - 1) / page * page);
    return WindowedLogFile(fd, fileStamp(status), window);
}

WindowedLogFile::WindowedLogFile(WindowedLogFile&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      stamp_(other.stamp_),
      windowBytes_(other.windowBytes_),
      incomplete_(other.incomplete_) {}

WindowedLogFile& WindowedLogFile::operator=(WindowedLogFile&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = std::exchange(other.fd_, -1);
        stamp_ = other.stamp_;
        windowBytes_ = other.windowBytes_;
        incomplete_ = other.incomplete_;
    }
    return *this;
}

WindowedLogFile::~WindowedLogFile() {
    if (fd_ >= 0) ::close(fd_);
}

std::optional<uint64_t> WindowedLogFile::endOfLineFrom(uint64_t from) {
    const auto size = static_cast<uint64_t>(stamp_.size);
    const uint64_t page = pageBytes();
    while (from < size) {
        const uint64_t windowStart = from / page * page;
        const Window window(fd_, windowStart, static_cast<size_t>(std::min<uint64_t>(windowBytes_, size - windowStart)),
                            true);
        if (!window.mapped()) return std::nullopt;
        const TornReadGuard guard(window.data(), window.length());
        const size_t skipped = static_cast<size_t>(from - windowStart);
        const void* found = std::memchr(window.data() + skipped, '\n', window.length() - skipped);
        if (guard.torn()) return std::nullopt;
        if (found != nullptr) return windowStart + static_cast<uint64_t>(static_cast<const char*>(found) - window.data()) + 1;
        from = windowStart + window.length();
    }
    return size;
}

void WindowedLogFile::forEachRun(const std::function<void(std::string_view run)>& onRun) {
    incomplete_ = false;
    const auto size = static_cast<uint64_t>(stamp_.size);
    const uint64_t page = pageBytes();
    uint64_t offset = 0;
    while (offset < size) {
        const uint64_t windowStart = offset / page * page;
        const uint64_t windowEnd = std::min(size, windowStart + windowBytes_);
        uint64_t runEnd = windowEnd;
        {
            const Window window(fd_, windowStart, static_cast<size_t>(windowEnd - windowStart), true);
            if (!window.mapped()) {
                incomplete_ = true;
                return;
            }
            const TornReadGuard guard(window.data(), window.length());
            const char* runStart = window.data() + (offset - windowStart);
            if (windowEnd < size) {
                // Only whole lines: the rest of the window starts the next one.
                const char* feed = lastLineFeed(runStart, static_cast<size_t>(windowEnd - offset));
                runEnd = feed ? windowStart + static_cast<uint64_t>(feed - window.data()) + 1 : 0;
            }
            if (runEnd != 0) onRun(std::string_view(runStart, static_cast<size_t>(runEnd - offset)));
            if (guard.torn()) {
                incomplete_ = true;
                return;
            }
        }
        if (runEnd == 0) {
            // One line fills the window: find its end, then map the line whole.
            const auto lineEnd = endOfLineFrom(windowEnd);
            if (!lineEnd) {
                incomplete_ = true;
                return;
            }
            const Window line(fd_, windowStart, static_cast<size_t>(*lineEnd - windowStart), false);
            if (!line.mapped()) {
                incomplete_ = true;
                return;
            }
            const TornReadGuard guard(line.data(), line.length());
            onRun(std::string_view(line.data() + (offset - windowStart), static_cast<size_t>(*lineEnd - offset)));
            if (guard.torn()) {
                incomplete_ = true;
                return;
            }
            runEnd = *lineEnd;
        }
        offset = runEnd;
    }
}

}  // namespace tallowen
