#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "TerminalImporter.hpp"

#include "model/DayKey.hpp"
#include "store/StoreQuery.hpp"
#include "ui/StatusLine.hpp"

#include <cstdio>

namespace tallowen::cli {

int runStatusLineCommand(const std::vector<std::string>& arguments) {
    int exitStatus = 0;
    const auto start = startCommand("statusline", arguments, {"--home", "--data"}, {"--json"}, exitStatus);
    if (!start) return exitStatus;
    const EngineEnvironment& environment = start->environment;
    const Date now = environment.clock();
    std::string error;
    // Today's samples and the fresh quotas only: a prompt runs this at every line.
    const auto samples = queryStoreFile(
        storeLocation(environment),
        [&](SqliteSampleStore& store) {
            return store.fetchFromDayOrQuotaSince(dayKey(now, environment.calendar), statusLineOldestQuotaUpdate(now));
        },
        error);
    if (!samples) {
        std::fprintf(stderr, "tallowen: statusline: %s\n", error.c_str());
        return 1;
    }
    const LocaleFormatter locale = LocaleFormatter::forProcess();
    const StatusLineFigures figures = statusLineFigures(*samples, now, environment.calendar);
    const std::string text = (start->options.has("--json") ? statusLineJson(figures, now, locale)
                                                            : statusLineText(figures, now, locale)) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
