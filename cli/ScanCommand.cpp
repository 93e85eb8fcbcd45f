#include "CliEnvironment.hpp"
#include "Commands.hpp"

#include "import/CursorDayCacheFile.hpp"
#include "import/ImportStateFile.hpp"
#include "import/ScanReport.hpp"

#include <cstdio>

namespace tallowen::cli {

int runScanCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("scan", arguments, {}, {"--json"});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    const ImportStateFile stateFile(environment.supportFolder);
    ImportState state = stateFile.load();
    const CursorDayCacheFile cursorFile(environment.supportFolder);
    std::optional<CursorDayCache> cursorCache = cursorFile.load();
    const auto cursorStamps = cursorStampsOf(cursorCache);
    const LogReadOutcome outcome = readAllLogs(environment.homeFolder, state.files, cursorCache, environment.calendar);
    // A failed save only means the next scan reads the files again.
    if (outcome.counters.filesRead > 0) stateFile.save(state);
    if (cursorStampsOf(cursorCache) != cursorStamps) cursorFile.save(cursorCache);

    const std::string report =
        start->options.has("--json") ? scanReportJson(outcome) + "\n" : scanReportText(outcome);
    std::fwrite(report.data(), 1, report.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
