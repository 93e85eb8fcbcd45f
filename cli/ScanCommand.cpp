#include "CliEnvironment.hpp"
#include "Commands.hpp"

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
    const LogReadOutcome outcome = readAllLogs(environment.homeFolder, state.files, environment.calendar);
    // A failed save only means the next scan reads the files again.
    stateFile.save(state);

    const std::string report =
        start->options.has("--json") ? scanReportJson(outcome) + "\n" : scanReportText(outcome);
    std::fwrite(report.data(), 1, report.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
