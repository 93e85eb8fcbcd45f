#pragma once

#include <atomic>
#include <cstdint>

namespace tallowen {

// How far the reading of one import has come, for a shell that shows progress
// while it waits. The readers write it from their threads; a shell polls it from
// another, so every field is atomic and only ever grows (or flips) during a run.
struct ScanProgress {
    // Log files found so far, and of those, the ones read or reused.
    std::atomic<int64_t> logFilesFound{0};
    std::atomic<int64_t> logFilesDone{0};
    // Bytes of log files parsed (reused files count nothing).
    std::atomic<int64_t> bytesRead{0};
    // True while Cursor's database is being read.
    std::atomic<bool> readingCursor{false};
};

}  // namespace tallowen
