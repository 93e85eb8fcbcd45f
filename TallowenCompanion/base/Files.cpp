#include "base/Files.hpp"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowen {
namespace {

constexpr std::string_view temporarySuffix = ".tmp-";

std::string temporarySuffixOfThisProcess() { return std::string(temporarySuffix) + std::to_string(::getpid()); }

// The writer of a "<name>.tmp-<pid>" file, when the name has that form.
std::optional<pid_t> temporaryFileWriter(std::string_view name) {
    const size_t suffix = name.rfind(temporarySuffix);
    if (suffix == std::string_view::npos || suffix == 0) return std::nullopt;
    const std::string_view digits = name.substr(suffix + temporarySuffix.size());
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() || pid <= 0) return std::nullopt;
    return pid;
}

bool isRunning(pid_t pid) { return ::kill(pid, 0) == 0 || errno == EPERM; }

}  // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
    // Non-blocking and regular files only: a fifo under the file's name must not hang the caller.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) return std::nullopt;
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    std::string contents;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) continue;
            ::close(fd);
            return std::nullopt;
        }
        if (count == 0) break;
        contents.append(buffer, static_cast<size_t>(count));
    }
    ::close(fd);
    return contents;
}

bool writeFileAtomically(const std::filesystem::path& path, std::string_view contents) {
    std::filesystem::path temporary = path;
    temporary += temporarySuffixOfThisProcess();
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    size_t written = 0;
    bool ok = true;
    while (written < contents.size()) {
        const ssize_t count = ::write(fd, contents.data() + written, contents.size() - written);
        if (count < 0) {
            if (errno == EINTR) continue;
            ok = false;
            break;
        }
        written += static_cast<size_t>(count);
    }
    if (ok && ::fsync(fd) != 0) ok = false;
    if (::close(fd) != 0) ok = false;
    if (ok && std::rename(temporary.c_str(), path.c_str()) != 0) ok = false;
    if (!ok) ::unlink(temporary.c_str());
    return ok;
}

int removeStaleTemporaryFiles(const std::filesystem::path& folder) {
    int removed = 0;
    std::error_code code;
    for (std::filesystem::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code)) {
        const auto writer = temporaryFileWriter(entry->path().filename().native());
        if (!writer || (*writer != ::getpid() && isRunning(*writer))) continue;
        std::error_code ignored;
        if (entry->is_regular_file(ignored) && std::filesystem::remove(entry->path(), ignored)) ++removed;
    }
    return removed;
}

}  // namespace tallowen
