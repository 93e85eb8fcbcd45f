#include "TallowenRun.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/Samples.hpp"
#include "support/UsageHome.hpp"

#include <sqlite3.h>

#include <chrono>
#include <thread>

namespace tallowen::testing {
namespace {

// Said by the shell each time it has the terminal back: how `watch` ended, and whether the keyboard is in
// line mode with echo again.
const std::string saysHowItEnded =
    "echo \"ended $?\"; stty -a | grep -q ' icanon .* echo ' && echo 'lines echoed'; ";

class WatchCommandTest : public TallowenRun {
protected:
    void SetUp() override { writeUsageHome(scratch, "home"); }
    int64_t storedCount() const { return SqliteSampleStore(data() / SqliteSampleStore::fileName).count(); }
    // `watch` on a terminal as a person's shell runs it: a foreground job in a process group of its own, so
    // that Ctrl-Z really stops it; `afterwards` runs once the shell has the terminal back. The shell, like an
    // interactive one, outlives a job ended by Ctrl-C.
    PseudoTerminal watchFromAShell(const std::string& afterwards = "") const {
        std::vector<std::string> command = {"/bin/sh", "-c", "trap : INT; set -m; \"$@\"; " + saysHowItEnded + afterwards,
                                            "sh"};
        for (const std::string& argument : argv({"watch"})) command.push_back(argument);
        return PseudoTerminal(command, 80, 24);
    }
};

// The user's screen is shown again after the last drawing on the alternate one.
void expectScreenHandedBack(const std::string& output) {
    ASSERT_NE(output.rfind("\x1b[?1049l"), npos);
    EXPECT_GT(output.rfind("\x1b[?1049l"), output.rfind("\x1b[?1049h"));
}

TEST_F(WatchCommandTest, PipedItImportsAtOnceDrawsThePanelAndStopsCleanlyOnASignal) {
    for (const char* signal : {"INT", "TERM"}) {
        SCOPED_TRACE(signal);
        std::filesystem::remove_all(data());
        const std::string panel = shellQuoted((scratch.path() / "panel").string());
        const CommandResult run = runCommand(commandLine("watch") + " >" + panel + " & for i in $(seq 100); do grep -q "
                                             "'Import ' " + panel + " 2>/dev/null && break; sleep 0.1; done; kill -" + signal +
                                             " $!; wait $!; status=$?; cat " + panel + "; exit $status", scratch.path());
        EXPECT_EQ(run.exitStatus, 0);
        EXPECT_EQ(run.standardOutput.rfind("■ TALLOWEN_\n", 0), 0u) << run.standardOutput;
        EXPECT_NE(run.standardOutput.find("OUTILS DÉTECTÉS\nCLAUDE CODE · CODEX · CURSOR\n"), npos);
        EXPECT_EQ(run.standardOutput.find("Store illisible"), npos);
        // The run reached the store whole, and the store was closed (its log folded back in).
        EXPECT_EQ(storedCount(), 5);
        EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite-wal"));
    }
}

// Duplicates to clean first: the cleaning view, which has no keys, comes before the panel.
TEST_F(WatchCommandTest, TheCleaningViewAnimatesThenCtrlZHandsTheTerminalBackAndTheForegroundTakesItAgain) {
    std::filesystem::create_directories(data());
    SqliteSampleStore store(data() / SqliteSampleStore::fileName);
    for (int day = 0; day < 20000; ++day)
        for (int copy = 0; copy < 2; ++copy)
            store.insert(slotSample("1900-" + std::to_string(100000 + day), "phone-gemini", Date{1.0 * copy}));
    store.save();

    PseudoTerminal watch = watchFromAShell("read line; fg; " + saysHowItEnded);
    ASSERT_TRUE(watch.waitFor("NETTOYAGE DES MESURES")) << watch.output();
    ASSERT_TRUE(watch.waitFor("Import ")) << watch.output();  // the panel back, the run over
    const std::string cleaning = watch.output();
    // Redrawn only when it changes: the view moved while the purge ran.
    const size_t cleaningStarted = cleaning.find("NETTOYAGE DES MESURES");
    EXPECT_NE(cleaning.find("NETTOYAGE DES MESURES", cleaningStarted + 1), npos);
    EXPECT_GT(cleaning.rfind("QUITTER"), cleaning.rfind("NETTOYAGE DES MESURES"));
    watch.type("\x1a");
    ASSERT_TRUE(watch.waitFor("lines echoed")) << watch.output();
    EXPECT_NE(watch.output().find("ended 148\nlines echoed"), npos);
    expectScreenHandedBack(watch.output());

    // Back in the foreground, it redraws and reads single keys again.
    watch.type("\nq");
    EXPECT_EQ(watch.waitForExit(), 0);
    const size_t resumed = watch.output().find("lines echoed");
    EXPECT_NE(watch.output().find("\x1b[?1049h", resumed), npos);
    EXPECT_NE(watch.output().find("QUITTER", resumed), npos);
    EXPECT_NE(watch.output().find("ended 0\nlines echoed", resumed), npos) << watch.output().substr(resumed);
    expectScreenHandedBack(watch.output());
    // The panel left on the user's screen no longer offers keys that work.
    const std::string finalPanel = watch.output().substr(watch.output().rfind("\x1b[?1049l"));
    EXPECT_NE(finalPanel.find("OUTILS D"), npos) << finalPanel;
    EXPECT_EQ(finalPanel.find("QUITTER"), npos) << finalPanel;
    EXPECT_EQ(storedCount(), 20000 + 5);
}

// While a run cannot end (another writer holds the store), Ctrl-C twice or the
// quit key (Ctrl-\) end the process at once, yet leave the terminal as it was found.
TEST_F(WatchCommandTest, AnEndingKeyDuringARunStillHandsTheTerminalBack) {
    std::filesystem::create_directories(data());
    storedCount();
    sqlite3* blocker = nullptr;
    ASSERT_EQ(sqlite3_open((data() / SqliteSampleStore::fileName).c_str(), &blocker), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(blocker, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    for (const auto& [key, ended] : {std::pair{"\x03", "ended 130"}, {"\x1c", "ended 131"}}) {
        SCOPED_TRACE(ended);
        PseudoTerminal watch = watchFromAShell();
        ASSERT_TRUE(watch.waitFor("IMPORT…")) << watch.output();
        watch.type(key);
        if (key[0] == '\x03') {  // the first Ctrl-C asks the run to stop, which it cannot
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            watch.type(key);
        }
        EXPECT_TRUE(watch.waitFor("lines echoed")) << watch.output();
        EXPECT_NE(watch.output().find(std::string(ended) + "\nlines echoed"), npos) << watch.output();
        expectScreenHandedBack(watch.output());
    }
    sqlite3_close(blocker);
}

}  // namespace
}  // namespace tallowen::testing
