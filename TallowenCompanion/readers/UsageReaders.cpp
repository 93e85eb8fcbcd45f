#include "readers/UsageReaders.hpp"

#include "readers/ClaudeCodeReader.hpp"
#include "readers/CodexReader.hpp"
#include "readers/CursorReader.hpp"
#include "readers/LogFolderScanner.hpp"

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
                           const LocalCalendar& calendar, ScanProgress* progress) {
    LogReadOutcome outcome;

    // One reader per run: each keeps its parser's buffers from file to file.
    ClaudeCodeReader claudeCode;
    const LogFileReader readClaudeCode = [&claudeCode](std::string_view bytes) {
        FileReading reading;
        claudeCode.parseFile(bytes, reading.events);
        return reading;
    };
    FolderScan claudeScan = scan(homeFolder / ".claude" / "projects", files, readClaudeCode, calendar, progress);
    addCounters(outcome.counters, claudeScan.counters);
    if (claudeScan.days) addTool(outcome, UsageTool::claudeCode, std::move(*claudeScan.days));

    CodexReader codex;
    const LogFileReader readCodex = [&codex](std::string_view bytes) {
        // The model and the quota belong to one file; nothing carries over to the next.
        CodexFileState file;
        codex.parseFile(bytes, file);
        return FileReading{std::move(file.events), std::move(file.quota)};
    };
    std::optional<DayMap> codexDays;
    for (const char* folder : {"sessions", "archived_sessions"}) {
        FolderScan codexScan = scan(homeFolder / ".codex" / folder, files, readCodex, calendar, progress);
        addCounters(outcome.counters, codexScan.counters);
        if (!codexScan.days) continue;
        if (!codexDays) codexDays.emplace();
        mergeDayMap(*codexDays, *codexScan.days);
    }
    if (codexDays) addTool(outcome, UsageTool::codex, std::move(*codexDays));

    if (progress) progress->readingCursor.store(true, std::memory_order_relaxed);
    auto cursorDays = readCursorUsage(homeFolder, calendar);
    if (progress) progress->readingCursor.store(false, std::memory_order_relaxed);
    if (cursorDays) addTool(outcome, UsageTool::cursor, std::move(*cursorDays));
    return outcome;
}

}  // namespace tallowen
