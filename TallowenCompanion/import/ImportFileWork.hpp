#pragma once

#include "model/LocalCalendar.hpp"
#include "readers/UsageReaders.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tallowen {

// The log readers' pass over a home folder (readAllLogs outside tests).
using LogReading = std::function<LogReadOutcome(const std::filesystem::path& homeFolder, FileEntries& files,
                                                std::optional<CursorDayCache>& cursorCache, const LocalCalendar&,
                                                const ScanSettings& settings)>;

// The file work of one import run: load the import state, read the logs,
// save the state. A value that owns everything it touches, so it runs on any
// thread, once, and goes back to the engine's thread as it is.
struct ImportFileWork {
    std::filesystem::path homeFolder;
    std::filesystem::path supportFolder;
    LocalCalendar calendar;
    LogReading readLogs;
    // Kept up to date while the logs are read, for a shell that shows progress.
    std::shared_ptr<ScanProgress> progress;

    // Filled by run().
    LogReadOutcome logs;
    // An unexpected failure of the file work; the run goes on without results.
    std::optional<std::string> failure;

    void run();
};

}  // namespace tallowen
