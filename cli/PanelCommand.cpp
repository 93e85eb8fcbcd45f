#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "IcuLocaleFormatter.hpp"
#include "PanelRenderer.hpp"
#include "TerminalSize.hpp"

#include "import/UsageImporter.hpp"
#include "model/DayKey.hpp"
#include "store/JsonSettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/PanelSession.hpp"
#include "ui/SummaryJson.hpp"

#include <cstdio>
#include <unistd.h>

namespace tallowen::cli {
namespace {

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// The panel of the data folder's store at rest; nothing, with the failure
// printed, when the store cannot be read.
std::optional<PanelFrame> restingFrame(PanelSession& session, const EngineEnvironment& environment,
                                       const ImporterState& importer, Date now, const char* errorPrefix) {
    const auto samples = readStoredSamples(SqliteSampleStore::locationIn(environment.supportFolder));
    if (!samples) {
        std::fprintf(stderr, "tallowen: %s%s\n", errorPrefix, samples.error().c_str());
        return std::nullopt;
    }
    session.samplesReloaded(*samples);
    session.importerChanged(importer);
    return session.frameAtRest(now);
}

ImporterState storedState(const EngineEnvironment& environment) {
    return storedImporterState(JsonSettingsStore::inSupportFolder(environment.supportFolder));
}

}  // namespace

int printPanelOnce(const EngineEnvironment& environment, const ImporterState& importer, const char* errorPrefix) {
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const Date now = environment.clock();
    PanelSession session(locale, environment.calendar, PanelOptions{}, now);
    const auto frame = restingFrame(session, environment, importer, now, errorPrefix);
    if (!frame) return 1;
    print(joinedLines(fittedPanel(*frame, false, TerminalStyle::forStandardOutput(), terminalSize(STDOUT_FILENO),
                                  false)));
    return 0;
}

int runPanelCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("panel", arguments, {}, {});
    if (!start) return reported(start.error());
    return printPanelOnce(start->environment, storedState(start->environment), "panel: ");
}

int runSummaryCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("summary", arguments, {}, {"--json"});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const Date now = environment.clock();
    const ImporterState importer = storedState(environment);
    PanelSession session(locale, environment.calendar, PanelOptions{}, now);
    const auto frame = restingFrame(session, environment, importer, now, "summary: ");
    if (!frame) return 1;
    print(summaryJson(session.model(), SummaryContext{now, dayKey(now, environment.calendar), locale.localeName(),
                                                      frame->today.counter.text, importer.lastImport}) +
          "\n");
    return 0;
}

}  // namespace tallowen::cli
