#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "PanelData.hpp"
#include "PlainText.hpp"
#include "SampleJson.hpp"

#include "model/DayKey.hpp"
#include "model/Iso8601Format.hpp"
#include "base/CsvText.hpp"
#include "base/JsonWriter.hpp"
#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

namespace tallowen::cli {
namespace {

struct DayFilter {
    std::optional<std::string> since;
    std::optional<std::string> until;
    std::optional<std::string> tool;

    bool admits(const UsageSample& sample) const {
        if (since && sample.dayKey < *since) return false;
        if (until && sample.dayKey > *until) return false;
        return !tool || sample.tool == *tool;
    }
};

std::string jsonReport(const std::vector<UsageSample>& samples) {
    JsonWriter json;
    json.beginObject();
    json.key("samples").beginArray();
    for (const UsageSample& sample : samples) writeSampleJson(json, sample, true);
    json.endArray();
    json.endObject();
    return json.take() + "\n";
}

std::string csvReport(const std::vector<UsageSample>& samples) {
    std::string text = csvRecord({"dayKey", "tool", "sessions", "requests", "inputTokens", "outputTokens",
                                  "estimatedCostCents", "estimatedWaterMilliliters", "updatedAt"});
    for (const UsageSample& s : samples)
        text += csvRecord({s.dayKey, s.tool, std::to_string(s.sessions), std::to_string(s.requests),
                           std::to_string(s.inputTokens), std::to_string(s.outputTokens),
                           std::to_string(s.estimatedCostCents), std::to_string(s.estimatedWaterMilliliters),
                           iso8601UtcText(s.updatedAt).value_or("")});
    return text;
}

std::string tableReport(const std::vector<UsageSample>& samples) {
    char line[512];
    std::snprintf(line, sizeof line, "%-10s  %-16s  %8s  %8s  %12s  %12s  %10s  %9s  %s\n", "day", "tool", "sessions",
                  "requests", "input", "output", "cost $", "water ml", "updated");
    std::string text = line;
    for (const UsageSample& sample : samples) {
        std::snprintf(line, sizeof line,
                      "%-10s  %-16s  %8" PRId64 "  %8" PRId64 "  %12" PRId64 "  %12" PRId64 "  %10s  %9" PRId64
                      "  %s\n",
                      sample.dayKey.c_str(), sample.tool.c_str(), sample.sessions, sample.requests,
                      sample.inputTokens, sample.outputTokens, dollarsText(sample.estimatedCostCents).c_str(),
                      sample.estimatedWaterMilliliters, iso8601UtcText(sample.updatedAt).value_or("-").c_str());
        text += line;
    }
    return text;
}

}  // namespace

int runDaysCommand(const std::vector<std::string>& arguments) {
    const auto daysAreWellWritten = [](const ParsedOptions& options, std::string& error) {
        for (const char* name : {"--since", "--until"}) {
            const auto day = options.value(name);
            if (day && !isCalendarDayKey(*day, LocalCalendar{})) {
                error = std::string(name) + " needs a day written YYYY-MM-DD, not " + *day;
                return false;
            }
        }
        if (options.has("--json") && options.has("--csv")) {
            error = "--json and --csv both set: give one";
            return false;
        }
        return true;
    };
    int exitStatus = 0;
    const auto start = startCommand("days", arguments, {"--since", "--until", "--tool", "--home", "--data"},
                                    {"--json", "--csv"}, exitStatus, daysAreWellWritten);
    if (!start) return exitStatus;
    const ParsedOptions& options = start->options;
    const DayFilter filter{options.value("--since"), options.value("--until"), options.value("--tool")};

    std::string error;
    // Nothing imported yet: no days, and no empty store created by looking.
    const auto stored = readStoredSamples(start->environment, error);
    if (!stored) {
        std::fprintf(stderr, "tallowen: days: %s\n", error.c_str());
        return 1;
    }
    std::vector<UsageSample> samples = oneSamplePerSlot(*stored);
    samples.erase(std::remove_if(samples.begin(), samples.end(),
                                 [&](const UsageSample& sample) { return !filter.admits(sample); }),
                  samples.end());

    const std::string text = options.has("--json") ? jsonReport(samples)
                             : options.has("--csv") ? csvReport(samples)
                                                    : tableReport(samples);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
