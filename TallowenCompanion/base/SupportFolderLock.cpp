#include "base/SupportFolderLock.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tallowen {

SupportFolderLock SupportFolderLock::tryAcquire(const std::filesystem::path& supportFolder) {
    const std::filesystem::path file = supportFolder / fileName;
    int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    // A lock file left in a folder that has since become read-only still locks.
    if (fd < 0) fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return SupportFolderLock(-1, Status::unavailable);
    int result = 0;
    do {
        result = ::flock(fd, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return SupportFolderLock(fd, Status::acquired);
    const Status status = errno == EWOULDBLOCK ? Status::busy : Status::unavailable;
    ::close(fd);
    return SupportFolderLock(-1, status);
}

SupportFolderLock::SupportFolderLock(SupportFolderLock&& other) noexcept : fd_(other.fd_), status_(other.status_) {
    other.fd_ = -1;
}

SupportFolderLock& SupportFolderLock::operator=(SupportFolderLock&& other) noexcept {
    if (this != &other) {
        release();
        fd_ = other.fd_;
        status_ = other.status_;
        other.fd_ = -1;
    }
    return *this;
}

SupportFolderLock::~SupportFolderLock() { release(); }

void SupportFolderLock::release() {
    // Closing the only descriptor of the open file releases the flock.
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

}  // namespace tallowen
