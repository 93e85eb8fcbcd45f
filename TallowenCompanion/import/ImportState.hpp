#pragma once

#include "model/FileEntry.hpp"

#include <cstdint>

namespace tallowen {

// What was read so far: per source file, its size and modification time when
// read and the days it yielded, so unchanged files are not read again.
struct ImportState {
    static constexpr int64_t currentVersion = 5;

    int64_t version = currentVersion;
    FileEntries files;

    friend bool operator==(const ImportState&, const ImportState&) = default;
};

}  // namespace tallowen
