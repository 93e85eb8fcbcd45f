#include "base/Files.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowen {

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
    temporary += ".tmp-" + std::to_string(::getpid());
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

}  // namespace tallowen
