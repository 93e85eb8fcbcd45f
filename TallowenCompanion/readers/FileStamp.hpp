#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <sys/stat.h>

namespace tallowen {

// What tells one version of a file from another without reading it: its size
// and modification time, the time kept to the nanosecond as the system gives it.
struct FileStamp {
    int64_t size = 0;
    Date modified;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The modification time of a file as a Date, seconds and nanoseconds alike,
// computed the same way every time so that an unchanged file compares equal.
Date modificationDate(const struct stat& status);

FileStamp fileStamp(const struct stat& status);

// Nothing when nothing is there or it is not a regular file (links are followed).
std::optional<FileStamp> regularFileStamp(const std::filesystem::path& path);

}  // namespace tallowen
