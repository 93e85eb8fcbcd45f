#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "IcuLocaleFormatter.hpp"
#include "Options.hpp"
#include "WatchPanel.hpp"

#include "app/ImportScheduler.hpp"
#include "app/SupportFolderImporter.hpp"
#include "store/SqliteSampleStore.hpp"

#include <atomic>
#include <csignal>
#include <cerrno>
#include <cstdio>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// A signal handler reaches only state that lives outside any object: the
// stop request that the loop reads, and what a forced stop hands back.
volatile std::sig_atomic_t stopRequested = 0;

// The keyboard's settings from before `watch` and whether the panel may be
// on the alternate screen: written once before the handler reads them.
termios settingsToRestore{};
volatile std::sig_atomic_t restoresSettings = 0;
volatile std::sig_atomic_t leavesAlternateScreen = 0;

// The keyboard's settings while `watch` reads single keys, taken again when
// the process resumes after Ctrl-Z.
termios settingsInWatch{};
volatile std::sig_atomic_t resumedAfterStop = 0;
// The window was resized: the panel is laid out and drawn anew.
volatile std::sig_atomic_t windowResized = 0;

// Puts the terminal back as the user had it.
void handTerminalBack() {
    if (restoresSettings != 0) ::tcsetattr(STDIN_FILENO, TCSANOW, &settingsToRestore);
    if (leavesAlternateScreen != 0) {
        const ssize_t ignored = ::write(STDOUT_FILENO, leaveAlternateScreen.data(), leaveAlternateScreen.size());
        static_cast<void>(ignored);
    }
}

void setHandler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

// Gives `signal` its default effect right here, the handler's own block lifted.
void takeDefaultEffect(int signal) {
    setHandler(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    ::raise(signal);
}

// Hands the terminal back, then lets the signal end the process with its
// default effect (the store is left as its last saved state).
void handTerminalBackAndEnd(int signal) {
    handTerminalBack();
    takeDefaultEffect(signal);
}

// Ctrl-Z: the terminal is handed back and the process stops. It goes on from
// here once continued (or at once, where the stop is not allowed), taking the
// keys again and having the loop redraw the whole panel.
extern "C" void suspend(int signal) {
    const int savedErrno = errno;
    handTerminalBack();
    takeDefaultEffect(signal);
    if (restoresSettings != 0) ::tcsetattr(STDIN_FILENO, TCSANOW, &settingsInWatch);
    setHandler(signal, suspend);
    resumedAfterStop = 1;
    errno = savedErrno;
}

extern "C" void requestStop(int signal) {
    if (stopRequested == 0) {
        stopRequested = 1;
        return;
    }
    // A second request ends the process at once.
    handTerminalBackAndEnd(signal);
}

extern "C" void endAtOnce(int signal) { handTerminalBackAndEnd(signal); }

extern "C" void noteResize(int) { windowResized = 1; }

// Ctrl-C and SIGTERM ask the loop to stop, a second one ends the process. A
// closed output (the reader of `watch | head` gone) and the quit key end it
// at once. Either way the terminal is handed back first; so it is when Ctrl-Z
// stops the process.
void installStopHandlers() {
    setHandler(SIGINT, requestStop);
    setHandler(SIGTERM, requestStop);
    setHandler(SIGPIPE, endAtOnce);
    setHandler(SIGQUIT, endAtOnce);
    setHandler(SIGTSTP, suspend);
    setHandler(SIGWINCH, noteResize);
}

// From now on a forced stop puts `keys`' settings back and leaves the
// alternate screen when the panel may be on it.
void restoreTerminalOnForcedStop(const WatchKeys& keys, bool outputIsTerminal) {
    if (const termios* saved = keys.savedSettings()) {
        settingsToRestore = *saved;
        ::tcgetattr(STDIN_FILENO, &settingsInWatch);
        std::atomic_signal_fence(std::memory_order_release);
        restoresSettings = 1;
    }
    leavesAlternateScreen = outputIsTerminal ? 1 : 0;
}

// Short enough for the title's erasing (a character every 45 ms) to show each step.
void sleepBriefly() {
    const timespec step{0, 40'000'000};
    // An interrupting signal simply ends the nap early.
    nanosleep(&step, nullptr);
}

}  // namespace

int runWatchCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("watch", arguments, {}, {});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    installStopHandlers();

    SupportFolderImporter terminal(environment);
    UsageImporter& importer = terminal.importer();
    // Console lines of the engine would break the panel drawn in place.
    importer.setLogLine([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });

    WatchKeys keys;
    const bool outputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    restoreTerminalOnForcedStop(keys, outputIsTerminal);
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    PanelSession session(locale, environment.calendar, PanelOptions{}, environment.clock());
    WatchPanelView view(session, SqliteSampleStore::locationIn(environment.supportFolder), stdout, outputIsTerminal,
                        keys.active());
    importer.setObserver([&](ImporterProperty property) {
        if (property == ImporterProperty::isImporting || property == ImporterProperty::purgeProgress)
            view.importerChanged(importer.state(), environment.clock());
    });

    ImportScheduler scheduler;
    bool requested = scheduler.start(environment.clock());
    bool firstRequest = true;
    while (!stopRequested) {
        // A request while a run is under way is dropped by the importer.
        if (requested) importer.startImport();
        requested = false;
        // The panel shows the store at once, before the first run is over.
        if (firstRequest) view.reload(importer.state(), environment.clock());
        firstRequest = false;
        if (importer.finishImportIfReady()) view.reload(importer.state(), environment.clock());
        if (resumedAfterStop || windowResized) {
            resumedAfterStop = 0;
            windowResized = 0;
            view.redrawWhole();
        }
        view.animate(environment.clock());
        for (const char key : keys.pending()) {
            if (key == 'q' || key == 'Q') stopRequested = 1;
            if (key == 'i' || key == 'I') requested = true;
        }
        if (stopRequested) break;
        sleepBriefly();
        requested = scheduler.tick(environment.clock()) || requested;
    }
    // A run under way is completed, so that its results reach the store whole.
    importer.setObserver(nullptr);
    if (importer.finishImport()) view.reload(importer.state(), environment.clock());
    view.finish(environment.clock());
    return 0;
}

}  // namespace tallowen::cli
