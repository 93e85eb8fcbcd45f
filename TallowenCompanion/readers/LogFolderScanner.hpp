#pragma once

#include "base/WorkerThreads.hpp"
#include "model/FileEntry.hpp"
#include "model/LocalCalendar.hpp"
#include "model/ScanProgress.hpp"
#include "model/UsageEvent.hpp"
#include "readers/LineRuns.hpp"
#include "readers/WindowedLogFile.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace tallowen {

// What a tool's reader makes of one log file.
struct FileReading {
    std::vector<UsageEvent> events;
    // The file's latest rate-limit snapshot, for tools that report one.
    std::optional<QuotaSnapshot> quota;
};

// Reads the lines of one log file.
using LogFileReader = std::function<FileReading(LineRuns& lines)>;
// Makes a reader for one thread: a reader may keep buffers from one file to
// the next, so it is never used by two threads.
using LogReaderMaker = std::function<LogFileReader()>;

struct ScanCounters {
    int64_t filesRead = 0;
    int64_t filesReused = 0;
    int64_t filesUnreadable = 0;
};

struct FolderScan {
    // The tool's days summed over the files found; nothing when the folder does not exist.
    std::optional<DayMap> days;
    ScanCounters counters;
};

struct ScanSettings {
    // Threads reading files at once; the results never depend on it.
    unsigned workerThreads = defaultWorkerThreads();
    // The most of one file held at a time (a longer line is held whole).
    size_t windowBytes = WindowedLogFile::defaultWindowBytes;
    // When given, follows the files found, done and the bytes read.
    ScanProgress* progress = nullptr;
};

// One folder of logs and the reader of the tool that writes them.
struct LogFolder {
    std::filesystem::path path;
    LogReaderMaker makeReader;
};

// Walks each folder for "*.jsonl" logs, skipping hidden files and folders. A
// file whose size and modification time match its entry in `files` keeps its
// stored days; any other is read with its folder's reader and its entry
// renewed. A file that cannot be read keeps its old entry and counts for
// nothing this time. Entries are keyed by the file's absolute path as text.
// The files of all folders are read together, spread over the worker threads;
// then each folder's days are summed in the order of the walk, so that the
// results are the same whatever the number of threads and whichever ran what.
// One scan per folder, in the order given.
std::vector<FolderScan> scanFolders(const std::vector<LogFolder>& folders, FileEntries& files,
                                    const LocalCalendar& calendar, const ScanSettings& settings = {});

// The same for one folder.
FolderScan scan(const std::filesystem::path& folder, FileEntries& files, const LogReaderMaker& makeReader,
                const LocalCalendar& calendar, const ScanSettings& settings = {});

// One file's days: its events folded by the episode rule under `sessionId`,
// and its quota, if any, held by the day the snapshot was taken.
DayMap daysOfFile(FileReading reading, std::string_view sessionId, const LocalCalendar& calendar);

}  // namespace tallowen
