#pragma once

#include "model/ScanProgress.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tallowen {

// How far an import's reading stands, read once from the live counters.
struct ImportProgressSnapshot {
    int64_t logFilesFound = 0;
    int64_t logFilesDone = 0;
    int64_t bytesRead = 0;
    bool readingCursor = false;
};

ImportProgressSnapshot snapshotOf(const ScanProgress& progress);

// A short import says nothing: the line shows once reading has lasted this long.
inline constexpr double importProgressDelaySeconds = 0.5;

// The line a terminal shows while an import reads, or nothing before the
// delay: "reading logs 120/1286 · 312 MB · 540 MB/s", then " · Cursor database"
// while that database is read. Megabytes are 10^6 bytes.
std::optional<std::string> importProgressLine(const ImportProgressSnapshot& snapshot, double elapsedSeconds);

}  // namespace tallowen
