#include "CliEnvironment.hpp"
#include "Commands.hpp"

#include "import/UsageImporter.hpp"
#include "model/DayKey.hpp"
#include "store/JsonSettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/PanelSession.hpp"
#include "ui/SummaryJson.hpp"

#include <cstdio>

namespace tallowen::cli {

int runSummaryCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("summary", arguments, {}, {"--json"});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    const auto samples = readStoredSamples(SqliteSampleStore::locationIn(environment.supportFolder));
    if (!samples) {
        std::fprintf(stderr, "tallowen: summary: %s\n", samples.error().c_str());
        return 1;
    }
    const LocaleFormatter locale = LocaleFormatter::forProcess();
    const Date now = environment.clock();
    const ImporterState importer = storedImporterState(JsonSettingsStore::inSupportFolder(environment.supportFolder));
    PanelSession session(locale, environment.calendar, PanelOptions{}, now);
    session.samplesReloaded(*samples);
    session.importerChanged(importer);
    const PanelFrame frame = session.frameAtRest(now);
    const std::string text =
        summaryJson(session.model(), SummaryContext{now, dayKey(now, environment.calendar), locale.localeName(),
                                                    frame.today.counter.text, importer.lastImport}) +
        "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
