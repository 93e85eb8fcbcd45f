#pragma once

#include "model/Date.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace tallowen {

// The modification time of a file as a Date, seconds and nanoseconds alike,
// computed the same way every time so that an unchanged file compares equal.
Date modificationDate(const struct stat& status);

// A regular file mapped read-only in one piece: its bytes are read where they
// lie, never copied. Holds the size and modification time of the version it
// mapped. An empty file needs no mapping and shows empty bytes.
class MappedFile {
public:
    // Nothing when the file cannot be opened, is not a regular file, or
    // cannot be mapped.
    static std::optional<MappedFile> open(const std::filesystem::path& path);

    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    std::string_view bytes() const { return {static_cast<const char*>(address_), length_}; }
    int64_t size() const { return static_cast<int64_t>(length_); }
    Date modified() const { return modified_; }

private:
    MappedFile(void* address, size_t length, Date modified) : address_(address), length_(length), modified_(modified) {}
    void unmap();

    void* address_ = nullptr;
    size_t length_ = 0;
    Date modified_;
};

}  // namespace tallowen
