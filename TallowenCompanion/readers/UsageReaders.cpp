#include "readers/UsageReaders.hpp"

#include "readers/ClaudeCodeReader.hpp"
#include "readers/CodexReader.hpp"
#include "readers/LogFolderScanner.hpp"

#include <memory>

namespace tallowen {
namespace {

void addCounters(ScanCounters& into, const ScanCounters& from) {
    into.filesRead += from.filesRead;
    into.filesReused += from.filesReused;
    into.filesUnreadable += from.filesUnreadable;
}

void addTool(LogReadOutcome& outcome, UsageTool tool, DayMap days) {
    outcome.detected.push_back(tool);
    outcome.results[tool] = std::move(days);
}

}  // namespace

LogReadOutcome readAllLogs(const std::filesystem::path& homeFolder, FileEntries& files,
                           std::optional<CursorDayCache>& cursorCache, const LocalCalendar& calendar,
                           const ScanSettings& settings) {
    LogReadOutcome outcome;

    // Each thread gets its own reader, which keeps its parser's buffers from file to file.
    const LogReaderMaker claudeCodeReader = [] {
        return [reader = std::make_shared<ClaudeCodeReader>()](LineRuns& lines) {
            FileReading reading;
            lines.forEachRun([&](std::string_view run) { reader->parseFile(run, reading.events); });
            return reading;
        };
    };
    const LogReaderMaker codexReader = [] {
        return [reader = std::make_shared<CodexReader>()](LineRuns& lines) {
            // The model and the quota belong to one file; nothing carries over to the next.
            CodexFileState file;
            lines.forEachRun([&](std::string_view run) { reader->parseFile(run, file); });
            return FileReading{std::move(file.events), std::move(file.quota)};
        };
    };
    std::vector<FolderScan> scans = scanFolders({{homeFolder / ".claude" / "projects", claudeCodeReader},
                                                 {homeFolder / ".codex" / "sessions", codexReader},
                                                 {homeFolder / ".codex" / "archived_sessions", codexReader}},
                                                files, calendar, settings);
    for (const FolderScan& folderScan : scans) addCounters(outcome.counters, folderScan.counters);
    if (scans[0].days) addTool(outcome, UsageTool::claudeCode, std::move(*scans[0].days));
    std::optional<DayMap> codexDays;
    for (size_t index : {1, 2}) {
        if (!scans[index].days) continue;
        if (!codexDays) codexDays.emplace();
        mergeDayMap(*codexDays, *scans[index].days);
    }
    if (codexDays) addTool(outcome, UsageTool::codex, std::move(*codexDays));

    if (ScanProgress* progress = settings.progress) progress->readingCursor.store(true, std::memory_order_relaxed);
    auto cursorDays = readCursorUsage(homeFolder, calendar, cursorCache);
    if (ScanProgress* progress = settings.progress) progress->readingCursor.store(false, std::memory_order_relaxed);
    if (cursorDays) addTool(outcome, UsageTool::cursor, std::move(*cursorDays));
    return outcome;
}

}  // namespace tallowen
