#include "TallowenRun.hpp"
#include "TextWidth.hpp"
#include "model/Clock.hpp"
#include "model/DayKey.hpp"
#include "model/Iso8601Format.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/SampleBuilder.hpp"
#include "support/Samples.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/UsageHome.hpp"

#include <sqlite3.h>

#include <chrono>
#include <thread>

namespace tallowen::testing {
namespace {

int widestLine(const std::string& text) {
    int widest = 0;
    for (const std::string& line : linesOf(text)) widest = std::max(widest, cli::displayWidth(line));
    return widest;
}

// Today in Paris and the three days before, in `days`, oldest first.
class TerminalCommandsTest : public TallowenRun {
protected:
    void SetUp() override {
        now = systemClock()();
        if (calendar.startOfDayAdding(now, 1)->secondsSince(now) < 120) GTEST_SKIP() << "too close to midnight";
        for (int offset = 3; offset >= 0; --offset) days.push_back(dayKey(*calendar.startOfDayAdding(now, -offset), calendar));
        std::filesystem::create_directories(home());
    }

    // Claude Code three days ago, nothing the day after, Codex yesterday, both today with Codex's quotas.
    void storeUsage() {
        std::filesystem::create_directories(data());
        SqliteSampleStore store(data() / SqliteSampleStore::fileName);
        const UsageSample claude =
            SampleBuilder(days[3], "claude-code").requests(7).tokens(120000, 30000).water(400).updatedAt(now);
        UsageSample codex = SampleBuilder(days[3], "codex").primaryQuota(40).secondaryQuota(88).updatedAt(now);
        codex.quotaSecondaryResetAt = now.addingSeconds(3 * 3600 + 1800);
        for (const UsageSample& sample : {SampleBuilder(days[0], "claude-code").tokens(500000).updatedAt(now).sample,
                                          SampleBuilder(days[2], "codex").tokens(2000000).cost(1234).updatedAt(now).sample,
                                          claude, codex})
            store.insert(sample);
        store.save();
    }
    CommandResult piped(const std::string& arguments) const { return tallowen(arguments, "fr_FR.UTF-8"); }

    ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    Date now;
    std::vector<std::string> days;
};

TEST_F(TerminalCommandsTest, ThePanelShowsTodaysLogsInFrench) {
    const auto reply = [](Date at, int64_t input, int64_t cacheWrite, int64_t cacheRead, int64_t output) {
        return R"({"type":"assistant","timestamp":")" + *iso8601UtcText(at) +
               R"(","message":{"model":"claude-sonnet-4-5","usage":{"input_tokens":)" + std::to_string(input) +
               R"(,"cache_creation_input_tokens":)" + std::to_string(cacheWrite) + R"(,"cache_read_input_tokens":)" +
               std::to_string(cacheRead) + R"(,"output_tokens":)" + std::to_string(output) + "}}}\n";
    };
    scratch.write("home/.claude/projects/demo/session.jsonl",
                  reply(std::max(now.addingSeconds(-600), calendar.startOfDay(now)), 1200, 30000, 200000, 4000) +
                      reply(calendar.startOfDayAdding(now, -2)->addingSeconds(12 * 3600), 3000, 60000, 400000, 9000));
    const CommandResult imported = piped("");
    ASSERT_EQ(imported.exitStatus, 0) << imported.standardError;
    const auto lines = linesOf(imported.standardOutput);
    EXPECT_EQ(widestLine(imported.standardOutput), 48);
    // Two measured days of 53,600 tokens on average: every token counted; the cost at Sonnet 4.5's prices.
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 7),
              (std::vector<std::string>{"■ TALLOWEN_", "", "AUJOURD'HUI · RECOURS RÉELS", "█▀█ ▄█   RECOURS",
                                        "█ █  █   35\u202f200 TOKENS", "▀▀▀ ▀▀▀", "0,24\u00a0$US au tarif API"}));
    EXPECT_NE(imported.standardOutput.find("CETTE SEMAINE\n2 recours · 107 k · "), npos);
    EXPECT_EQ(lines.back().find("Import "), 36u);
    EXPECT_EQ(piped("panel").standardOutput, imported.standardOutput);  // the store gives the same panel
}

TEST_F(TerminalCommandsTest, HistoryAndPanelFitTheTerminalAndHistoryEightyColumnsPiped) {
    storeUsage();
    PseudoTerminal terminal(argv({"history", "--days", "4"}), 60, 20);
    ASSERT_EQ(terminal.waitForExit(), 0);
    EXPECT_NE(terminal.output().find("\x1b[38;5;"), npos) << terminal.output();
    EXPECT_EQ(widestLine(terminal.output()), 60) << terminal.output();  // yesterday's bar fills the width

    const auto result = piped("history --days 4");
    EXPECT_EQ(result.standardOutput.find('\x1b'), npos);
    const auto lines = linesOf(result.standardOutput);
    ASSERT_EQ(lines.size(), 7u) << result.standardOutput;
    EXPECT_EQ(lines[0], "tokens per day, " + days[0] + " to " + days[3]);
    EXPECT_EQ(lines[1], "█ CLAUDE CODE 650 k  ▓ CODEX 2,0 M");
    EXPECT_EQ(lines[4], days[1]);  // a day without use: an empty row
    // The largest day's bar takes every column the day and its figure leave.
    EXPECT_EQ(lines[5], days[2] + "  ▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓ 2,0 M");

    PseudoTerminal panel(argv({"panel"}), 44, 24);
    ASSERT_EQ(panel.waitForExit(), 0);
    EXPECT_LE(widestLine(panel.output()), 44) << panel.output();
    EXPECT_LE(linesOf(panel.output()).size(), 24u) << panel.output();
    const auto week = panel.output().find("CETTE SEMAINE");  // rows merged: the week's title and figures on one line
    EXPECT_LT(panel.output().find("7 recours · 2,6 M", week), panel.output().find('\n', week)) << panel.output();
}

TEST_F(TerminalCommandsTest, StatusLineHelpAndCsv) {
    EXPECT_EQ(piped("statusline").standardOutput, "0 recours · 0 tokens · 0,0 L\n");
    EXPECT_FALSE(std::filesystem::exists(data() / SqliteSampleStore::fileName));  // read only, never created
    storeUsage();
    const std::pair<std::string, std::string> cases[] = {
        {"statusline", "7 recours · 150 k tokens · 0,4 L · CODEX 7J 88 % reset 3 h\n"},
        {"help days", "usage: tallowen days [--since DAY]"},
        {"--help", "commands:\n"},
        {"days --csv --since " + days[2],
         "dayKey,tool,sessions,requests,inputTokens,outputTokens,estimatedCostCents,estimatedWaterMilliliters,"
         "updatedAt\n" + days[2] + ",codex,0,0,2000000,0,1234,0,"},
    };
    for (const auto& [command, output] : cases) {
        SCOPED_TRACE(command);
        const auto result = piped(command);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_NE(result.standardOutput.find(output), npos) << result.standardOutput;
        EXPECT_EQ(result.standardError, "");
    }
}

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
    // interactive one, outlives a job ended by Ctrl-C: dash does under its trap, as Debian's /bin/sh; a bash
    // running a script would leave with its job.
    PseudoTerminal watchFromAShell(const std::string& afterwards = "") const {
        std::vector<std::string> command = {"/bin/sh", "-c",
                                            "trap : INT; set -m; \"$@\"; " + saysHowItEnded + afterwards, "sh"};
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
        // The run reached the store whole, and the store was closed (its log folded back in).
        EXPECT_EQ(storedCount(), 5);
        EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite-wal"));
    }
}

// Duplicates to clean first: the cleaning view, which has no keys, comes before the panel.
TEST_F(WatchCommandTest, TheCleaningViewAnimatesThePanelFollowsTheTerminalsSizeAndCtrlZHandsItBack) {
    std::filesystem::create_directories(data());
    SqliteSampleStore store(data() / SqliteSampleStore::fileName);
    for (int day = 0; day < 20000; ++day)
        for (int copy = 0; copy < 2; ++copy)
            store.insert(slotSample("1900-" + std::to_string(100000 + day), "phone-gemini", Date{1.0 * copy}));
    store.save();

    PseudoTerminal watch = watchFromAShell("read line; fg; " + saysHowItEnded);
    ASSERT_TRUE(watch.waitFor("NETTOYAGE DES MESURES")) << watch.output();
    ASSERT_TRUE(watch.waitFor("Import ")) << watch.output();  // the panel back, the run over
    // Redrawn only when it changes: the view moved while the purge ran.
    const size_t cleaningStarted = watch.output().find("NETTOYAGE DES MESURES");
    EXPECT_NE(watch.output().find("NETTOYAGE DES MESURES", cleaningStarted + 1), npos);
    EXPECT_GT(watch.output().rfind("QUITTER"), watch.output().rfind("NETTOYAGE DES MESURES"));
    const std::string screen = watch.output().substr(watch.output().rfind("\x1b[H"));  // the last drawing
    EXPECT_LE(linesOf(screen).size(), 24u) << screen;
    EXPECT_EQ(screen.find("───"), npos) << screen;
    watch.resize(100, 60);  // room for the full panel, separators and big figures
    ASSERT_TRUE(watch.waitFor("───")) << watch.output();
    watch.resize(30, 10);
    ASSERT_TRUE(watch.waitFor("Terminal too narrow: 30 columns, the panel needs 40.")) << watch.output();
    watch.resize(80, 24);
    watch.type("\x1a");
    ASSERT_TRUE(watch.waitFor("lines echoed")) << watch.output();
    EXPECT_NE(watch.output().find("ended 148\nlines echoed"), npos);
    expectScreenHandedBack(watch.output());

    // Back in the foreground, it redraws and reads single keys again.
    const size_t resumed = watch.output().size();
    watch.type("\n");
    ASSERT_TRUE(watch.waitFor("QUITTER", resumed)) << watch.output().substr(resumed);
    EXPECT_NE(watch.output().find("\x1b[?1049h", resumed), npos);
    watch.type("q");
    EXPECT_EQ(watch.waitForExit(), 0);
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

TEST(InstallTest, PutsTheCommandItsManualAndThreeCompletionsUnderThePrefix) {
    TempDir prefix;
    const auto installed = [&](const std::string& file) { return shellQuoted((prefix.path() / file).string()); };
    const auto result = runCommand("cmake --install " + shellQuoted(TALLOWEN_BUILD_DIR) + " --prefix " + installed(""),
                                   prefix.path());
    ASSERT_EQ(result.exitStatus, 0) << result.standardError;
    EXPECT_EQ(runCommand(installed("bin/tallowen") + " --version", prefix.path()).standardOutput, "tallowen 0.1.0\n");
    // The manual reads without a warning and the completions parse, where the tools are at hand.
    for (const auto& [tool, file] : {std::pair{"groff -man -Tutf8 -ww -z", "share/man/man1/tallowen.1"},
                                     {"bash -n", "share/bash-completion/completions/tallowen"},
                                     {"zsh -n", "share/zsh/site-functions/_tallowen"},
                                     {"fish -n", "share/fish/vendor_completions.d/tallowen.fish"}}) {
        const std::string program = std::string(tool).substr(0, std::string(tool).find(' '));
        const auto check = runCommand("test -f " + installed(file) + " && { ! command -v " + program +
                                          " >/dev/null || " + tool + " " + installed(file) + "; }", prefix.path());
        EXPECT_EQ(check.exitStatus, 0) << file;
        EXPECT_EQ(check.standardError, "") << file;
    }
}

}  // namespace
}  // namespace tallowen::testing
