#pragma once

#include "model/FileEntry.hpp"
#include "model/LocalCalendar.hpp"
#include "model/ScanProgress.hpp"
#include "model/UsageEvent.hpp"
#include "readers/UsageReaders.hpp"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace tallowen {

// What a tool's reader makes of the bytes of one log file.
struct FileReading {
    std::vector<UsageEvent> events;
    // The file's latest rate-limit snapshot, for tools that report one.
    std::optional<QuotaSnapshot> quota;
};

using LogFileReader = std::function<FileReading(std::string_view bytes)>;

struct FolderScan {
    // The tool's days summed over the files found; nothing when the folder does not exist.
    std::optional<DayMap> days;
    ScanCounters counters;
};

// Walks `folder` for "*.jsonl" logs, skipping hidden files and folders. A file
// whose size and modification time match its entry in `files` keeps its stored
// days; any other is mapped, read with `reader` and its entry renewed. A file
// that cannot be read keeps its old entry and counts for nothing this time.
// Entries are keyed by the file's absolute path as text.
// `progress`, when given, follows the files found, done and the bytes read.
FolderScan scan(const std::filesystem::path& folder, FileEntries& files, const LogFileReader& reader,
                const LocalCalendar& calendar, ScanProgress* progress = nullptr);

// One file's days: its events folded by the episode rule under `sessionId`,
// and its quota, if any, held by the day the snapshot was taken.
DayMap daysOfFile(FileReading reading, std::string_view sessionId, const LocalCalendar& calendar);

}  // namespace tallowen
