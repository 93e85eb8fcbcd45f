#include "ui/ImportProgressLine.hpp"

#include <cinttypes>
#include <cstdio>

namespace tallowen {

ImportProgressSnapshot snapshotOf(const ScanProgress& progress) {
    return ImportProgressSnapshot{progress.logFilesFound.load(std::memory_order_relaxed),
                                  progress.logFilesDone.load(std::memory_order_relaxed),
                                  progress.bytesRead.load(std::memory_order_relaxed),
                                  progress.readingCursor.load(std::memory_order_relaxed)};
}

std::optional<std::string> importProgressLine(const ImportProgressSnapshot& snapshot, double elapsedSeconds) {
    if (!(elapsedSeconds >= importProgressDelaySeconds)) return std::nullopt;
    const double megabytes = static_cast<double>(snapshot.bytesRead) / 1e6;
    char line[160];
    std::snprintf(line, sizeof line, "reading logs %" PRId64 "/%" PRId64 " · %.0f MB · %.0f MB/s",
                  snapshot.logFilesDone, snapshot.logFilesFound, megabytes, megabytes / elapsedSeconds);
    std::string text = line;
    if (snapshot.readingCursor) text += " · Cursor database";
    return text;
}

}  // namespace tallowen
