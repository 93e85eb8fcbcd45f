#include "IcuLocaleFormatter.hpp"
#include "CliEnvironment.hpp"
#include "Commands.hpp"

#include "model/DayKey.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/StatusLine.hpp"

#include <cstdio>

namespace tallowen::cli {

int runStatusLineCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("statusline", arguments, {}, {"--json"});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    const Date now = environment.clock();
    // Today's samples and the fresh quotas only: a prompt runs this at every line.
    const auto samples =
        readStoredSamples(SqliteSampleStore::locationIn(environment.supportFolder), [&](SqliteSampleStore& store) {
            return store.fetchFromDayOrQuotaSince(dayKey(now, environment.calendar), statusLineOldestQuotaUpdate(now));
        });
    if (!samples) {
        std::fprintf(stderr, "tallowen: statusline: %s\n", samples.error().c_str());
        return 1;
    }
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const StatusLineFigures figures = statusLineFigures(*samples, now, environment.calendar);
    const std::string text = (start->options.has("--json") ? statusLineJson(figures, now, locale)
                                                            : statusLineText(figures, now, locale)) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
