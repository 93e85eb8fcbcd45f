#pragma once

#include "model/Date.hpp"
#include "model/DayUsage.hpp"

#include <cstdint>
#include <map>
#include <string>

namespace tallowen {

// One source file as last read: its size and modification time then, and the
// days it yielded.
struct FileEntry {
    int64_t size = 0;
    Date modified;
    DayMap days;

    friend bool operator==(const FileEntry&, const FileEntry&) = default;
};

// Per source file, keyed by the text that identifies it, its last reading.
using FileEntries = std::map<std::string, FileEntry>;

}  // namespace tallowen
