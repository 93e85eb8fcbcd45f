#include "readers/FileStamp.hpp"

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

FileStamp fileStamp(const struct stat& status) {
    return FileStamp{static_cast<int64_t>(status.st_size), modificationDate(status)};
}

std::optional<FileStamp> regularFileStamp(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return fileStamp(status);
}

}  // namespace tallowen
