#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "TerminalImporter.hpp"
#include "WatchPanel.hpp"

#include "app/ImportScheduler.hpp"

#include <csignal>
#include <cstdio>
#include <time.h>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// Set by the signal handler, read by the loop: the one thing a handler may
// touch, so it has to live outside any object.
volatile std::sig_atomic_t stopRequested = 0;

extern "C" void requestStop(int) { stopRequested = 1; }

// Ctrl-C and SIGTERM ask the loop to stop; a second one ends the process at
// once (the store is left as its last saved state).
void installStopHandlers() {
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// Short enough for the title's erasing (a character every 45 ms) to show each step.
void sleepBriefly() {
    const timespec step{0, 40'000'000};
    // An interrupting signal simply ends the nap early.
    nanosleep(&step, nullptr);
}

}  // namespace

int runWatchCommand(const std::vector<std::string>& arguments) {
    std::string error;
    const auto options = parseOptions(arguments, {"--home", "--data"}, {}, error);
    if (!options) {
        std::fprintf(stderr, "tallowen: watch: %s\n", error.c_str());
        return 2;
    }
    const auto environment = environmentFromOptions(*options, error);
    if (!environment) {
        std::fprintf(stderr, "tallowen: watch: %s\n", error.c_str());
        return 1;
    }
    installStopHandlers();

    TerminalImporter terminal(*environment);
    UsageImporter& importer = terminal.importer();
    // Console lines of the engine would break the panel drawn in place.
    importer.setLogLine([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });

    WatchKeys keys;
    WatchPanelView view(*environment, LocaleFormatter::forProcess(), stdout, ::isatty(STDOUT_FILENO) == 1,
                        keys.active(), environment->clock());
    // The purge runs inside the end of a run: its progress is drawn as it is published.
    importer.setObserver([&](ImporterProperty property) {
        if (property == ImporterProperty::isImporting || property == ImporterProperty::purgeProgress)
            view.importerChanged(importer, environment->clock());
    });

    ImportScheduler scheduler;
    bool requested = scheduler.start(environment->clock());
    bool firstRequest = true;
    while (!stopRequested) {
        // A request while a run is under way is dropped by the importer.
        if (requested) importer.startImport();
        requested = false;
        // The panel shows the store at once, before the first run is over.
        if (firstRequest) view.reload(importer, environment->clock());
        firstRequest = false;
        if (importer.finishImportIfReady()) view.reload(importer, environment->clock());
        view.animate(environment->clock());
        for (const char key : keys.pending()) {
            if (key == 'q' || key == 'Q') stopRequested = 1;
            if (key == 'i' || key == 'I') requested = true;
        }
        if (stopRequested) break;
        sleepBriefly();
        requested = scheduler.tick(environment->clock()) || requested;
    }
    // A run under way is completed, so that its results reach the store whole.
    importer.setObserver(nullptr);
    if (importer.finishImport()) view.reload(importer, environment->clock());
    view.finish();
    return 0;
}

}  // namespace tallowen::cli
