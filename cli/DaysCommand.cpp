#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "SampleJson.hpp"
#include "TerminalImporter.hpp"

#include "model/Iso8601Format.hpp"
#include "model/JsonWriter.hpp"
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

std::string jsonReport(const std::vector<UsageSample>& samples) {
    JsonWriter json;
    json.beginObject();
    json.key("samples").beginArray();
    for (const UsageSample& sample : samples) writeSampleJson(json, sample, true);
    json.endArray();
    json.endObject();
    return json.take() + "\n";
}

std::string dollarsText(int64_t cents) {
    const bool negative = cents < 0;
    const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(cents) : static_cast<uint64_t>(cents);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%s%" PRIu64 ".%02" PRIu64, negative ? "-" : "", magnitude / 100,
                  magnitude % 100);
    return buffer;
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
    std::string error;
    const auto options =
        parseOptions(arguments, {"--since", "--until", "--tool", "--home", "--data"}, {"--json"}, error);
    if (!options) {
        std::fprintf(stderr, "tallowen: days: %s\n", error.c_str());
        return 2;
    }
    const DayFilter filter{options->value("--since"), options->value("--until"), options->value("--tool")};
    for (const auto& [name, day] : {std::pair{"--since", filter.since}, std::pair{"--until", filter.until}}) {
        if (day && !isDayKeyText(*day)) {
            std::fprintf(stderr, "tallowen: days: %s needs a day written YYYY-MM-DD, not %s\n", name, day->c_str());
            return 2;
        }
    }
    const auto environment = environmentFromOptions(*options, error);
    if (!environment) {
        std::fprintf(stderr, "tallowen: days: %s\n", error.c_str());
        return 1;
    }

    std::vector<UsageSample> samples;
    // Nothing imported yet: no days, and no empty store created by looking.
    if (std::filesystem::exists(storeLocation(*environment))) {
        try {
            SqliteSampleStore store(storeLocation(*environment), SqliteSampleStore::Access::readOnly);
            samples = oneSamplePerSlot(store.fetchAll());
        } catch (const StoreError& failure) {
            std::fprintf(stderr, "tallowen: days: Store illisible : %s\n", failure.what());
            return 1;
        }
    }
    // Listed by day, then tool.
    std::sort(samples.begin(), samples.end(), [](const UsageSample& a, const UsageSample& b) {
        return a.dayKey != b.dayKey ? a.dayKey < b.dayKey : a.tool < b.tool;
    });
    samples.erase(std::remove_if(samples.begin(), samples.end(),
                                 [&](const UsageSample& sample) { return !filter.admits(sample); }),
                  samples.end());

    const std::string text = options->has("--json") ? jsonReport(samples) : tableReport(samples);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
