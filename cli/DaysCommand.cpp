#include "CliEnvironment.hpp"
#include "Commands.hpp"

#include "model/DaySamplesJson.hpp"
#include "model/DayTable.hpp"
#include "store/SqliteSampleStore.hpp"
#include "summary/DaySelection.hpp"

#include <cstdio>

namespace tallowen::cli {

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
    const auto stored = readStoredSamples(SqliteSampleStore::locationIn(start->environment.supportFolder));
    if (!stored) {
        std::fprintf(stderr, "tallowen: days: %s\n", stored.error().c_str());
        return 1;
    }
    const std::vector<UsageSample> samples =
        selectedDays(*stored, DaySelection{options.value("--since"), options.value("--until"), options.value("--tool")});

    const std::string text = options.has("--json") ? daySamplesJson(samples) + "\n" : daysTable(samples);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
