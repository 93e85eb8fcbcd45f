#include "readers/MappedFile.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace tallowen {

Date modificationDate(const struct stat& status) {
#if defined(__APPLE__)
    const struct timespec& time = status.st_mtimespec;
#else
    const struct timespec& time = status.st_mtim;
#endif
    // Whole seconds are moved to the reference date first, in integers, so the
    // nanoseconds keep as much precision as a double allows. Near the earliest
    // 64-bit time the integers cannot go lower; there a double is as precise.
    const auto offset = static_cast<int64_t>(Date::unixEpochOffsetSeconds);
    int64_t sinceReference = 0;
    const double seconds = __builtin_sub_overflow(static_cast<int64_t>(time.tv_sec), offset, &sinceReference)
                               ? static_cast<double>(time.tv_sec) - Date::unixEpochOffsetSeconds
                               : static_cast<double>(sinceReference);
    return Date{seconds + static_cast<double>(time.tv_nsec) / 1e9};
}

std::optional<MappedFile> MappedFile::open(const std::filesystem::path& path) {
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
    const Date modified = modificationDate(status);
    const auto length = static_cast<size_t>(status.st_size);
    if (length == 0) {
        ::close(fd);
        return MappedFile(nullptr, 0, modified);
    }
    void* address = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, fd, 0);
    ::close(fd);
    if (address == MAP_FAILED) return std::nullopt;
    // The file is read once from start to end: read ahead, and let its pages go.
    ::madvise(address, length, MADV_SEQUENTIAL);
    return MappedFile(address, length, modified);
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : address_(std::exchange(other.address_, nullptr)),
      length_(std::exchange(other.length_, 0)),
      modified_(other.modified_) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    if (this != &other) {
        unmap();
        address_ = std::exchange(other.address_, nullptr);
        length_ = std::exchange(other.length_, 0);
        modified_ = other.modified_;
    }
    return *this;
}

MappedFile::~MappedFile() { unmap(); }

void MappedFile::unmap() {
    if (address_ != nullptr) ::munmap(address_, length_);
    address_ = nullptr;
    length_ = 0;
}

}  // namespace tallowen
