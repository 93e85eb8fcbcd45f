#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "PlainText.hpp"

#include "model/Iso8601Format.hpp"
#include "model/DaySamplesJson.hpp"
#include "store/SqliteSampleStore.hpp"
#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

namespace tallowen::cli {
namespace {

bool isDayKeyText(const std::string& text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i != 4 && i != 7 && !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
    return true;
}

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
    const auto daysAreWellWritten = [](const ParsedOptions& options) -> std::optional<std::string> {
        for (const char* name : {"--since", "--until"})
            if (const auto day = options.value(name); day && !isDayKeyText(*day))
                return std::string(name) + " needs a day written YYYY-MM-DD, not " + *day;
        return std::nullopt;
    };
    const auto start = startCommand("days", arguments, {"--since", "--until", "--tool"}, {"--json"}, daysAreWellWritten);
    if (!start) return reported(start.error());
    const ParsedOptions& options = start->options;
    const DayFilter filter{options.value("--since"), options.value("--until"), options.value("--tool")};

    const auto stored = readStoredSamples(SqliteSampleStore::locationIn(start->environment.supportFolder));
    if (!stored) {
        std::fprintf(stderr, "tallowen: days: %s\n", stored.error().c_str());
        return 1;
    }
    std::vector<UsageSample> samples = oneSamplePerSlot(*stored);
    samples.erase(std::remove_if(samples.begin(), samples.end(),
                                 [&](const UsageSample& sample) { return !filter.admits(sample); }),
                  samples.end());

    const std::string text = options.has("--json") ? daySamplesJson(samples) + "\n" : tableReport(samples);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
