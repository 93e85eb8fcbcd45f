#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "PanelRenderer.hpp"

#include "import/UsageImporter.hpp"
#include "store/JsonSettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/PanelSession.hpp"

#include <cstdio>

namespace tallowen::cli {

int printPanelOnce(const EngineEnvironment& environment, const ImporterState& importer, const char* errorPrefix) {
    const auto samples = readStoredSamples(SqliteSampleStore::locationIn(environment.supportFolder));
    if (!samples) {
        std::fprintf(stderr, "tallowen: %s%s\n", errorPrefix, samples.error().c_str());
        return 1;
    }
    const LocaleFormatter locale = LocaleFormatter::forProcess();
    const Date now = environment.clock();
    PanelSession session(locale, environment.calendar, PanelOptions{}, now);
    session.samplesReloaded(*samples);
    session.importerChanged(importer);
    const std::string text =
        joinedLines(renderPanel(session.frameAtRest(now), false, TerminalStyle::forStandardOutput()));
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

int runPanelCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("panel", arguments, {}, {});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    return printPanelOnce(environment, storedImporterState(JsonSettingsStore::inSupportFolder(environment.supportFolder)),
                          "panel: ");
}

}  // namespace tallowen::cli
