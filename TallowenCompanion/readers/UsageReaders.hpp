#pragma once

#include "model/FileEntry.hpp"
#include "model/LocalCalendar.hpp"
#include "readers/CursorDayCache.hpp"
#include "readers/LogFolderScanner.hpp"
#include "model/UsageTool.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace tallowen {

struct LogReadOutcome {
    // Tools whose source exists, in reading order: claude-code, codex, cursor.
    std::vector<UsageTool> detected;
    ToolResults results;
    ScanCounters counters;
};

// Runs the Claude Code, Codex and Cursor readers against a home folder,
// renewing `files` for every log file that changed. A tool whose source is
// absent is neither detected nor in the results; one whose source holds
// nothing is detected with an empty day map.
// Cursor's days come from `cursorCache` while its stamps hold, and renew it
// otherwise. The log files are read as `settings` say; its progress, when
// given, is kept up to date for a shell to show.
LogReadOutcome readAllLogs(const std::filesystem::path& homeFolder, FileEntries& files,
                           std::optional<CursorDayCache>& cursorCache, const LocalCalendar& calendar,
                           const ScanSettings& settings = {});

}  // namespace tallowen
