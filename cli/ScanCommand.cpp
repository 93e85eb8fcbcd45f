#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "PlainText.hpp"

#include "import/DaySample.hpp"
#include "import/ImportStateFile.hpp"
#include "model/DaySamplesJson.hpp"
#include "readers/UsageReaders.hpp"

#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

namespace tallowen::cli {
namespace {

std::string percentText(const std::optional<double>& percent) {
    if (!percent) return "-";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.0f%%", *percent);
    return buffer;
}

std::string quotaText(const UsageSample& sample) {
    if (!sample.quotaPrimaryPercent && !sample.quotaSecondaryPercent && !sample.quotaPlan) return "";
    std::string text = percentText(sample.quotaPrimaryPercent) + " / " + percentText(sample.quotaSecondaryPercent);
    if (sample.quotaPlan) text += " " + *sample.quotaPlan;
    return text;
}

std::string tableReport(const LogReadOutcome& outcome) {
    std::string text = "detected:";
    for (const UsageTool tool : outcome.detected) {
        text += ' ';
        text += rawValue(tool);
    }
    if (outcome.detected.empty()) text += " none";
    text += "\n\n";
    char line[512];
    std::snprintf(line, sizeof line, "%-10s  %-11s  %8s  %8s  %12s  %12s  %10s  %9s  %s\n", "day", "tool", "sessions",
                  "requests", "input", "output", "cost $", "water ml", "quota");
    text += line;
    for (const UsageSample& sample : samplesOfResults(outcome.results)) {
        std::snprintf(line, sizeof line,
                      "%-10s  %-11s  %8" PRId64 "  %8" PRId64 "  %12" PRId64 "  %12" PRId64 "  %10s  %9" PRId64 "  ",
                      sample.dayKey.c_str(), sample.tool.c_str(), sample.sessions, sample.requests,
                      sample.inputTokens, sample.outputTokens, dollarsText(sample.estimatedCostCents).c_str(),
                      sample.estimatedWaterMilliliters);
        text += line;
        // The plan name has no bound: it is appended, never cut to the buffer.
        text += quotaText(sample);
        // A row without a quota would end in blanks.
        while (!text.empty() && text.back() == ' ') text.pop_back();
        text += '\n';
    }
    std::snprintf(line, sizeof line, "\nfiles read: %" PRId64 ", reused: %" PRId64, outcome.counters.filesRead,
                  outcome.counters.filesReused);
    text += line;
    if (outcome.counters.filesUnreadable > 0) {
        std::snprintf(line, sizeof line, ", unreadable: %" PRId64, outcome.counters.filesUnreadable);
        text += line;
    }
    text += '\n';
    return text;
}

}  // namespace

int runScanCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("scan", arguments, {}, {"--json"});
    if (!start) return reported(start.error());
    const ParsedOptions& options = start->options;
    const EngineEnvironment& environment = start->environment;
    const ImportStateFile stateFile(environment.supportFolder);
    ImportState state = stateFile.load();
    const LogReadOutcome outcome = readAllLogs(environment.homeFolder, state.files, environment.calendar);
    // A failed save only means the next scan reads the files again.
    stateFile.save(state);

    const std::string report = options.has("--json")
                                   ? scannedDaysJson(outcome.detected, samplesOfResults(outcome.results)) + "\n"
                                   : tableReport(outcome);
    std::fwrite(report.data(), 1, report.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
