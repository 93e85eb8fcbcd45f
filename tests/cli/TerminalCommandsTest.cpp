#include "TextWidth.hpp"
#include "model/DayKey.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/RunCommand.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <chrono>
#include <thread>

namespace tallowen {
namespace {

using testing::PseudoTerminal;
using testing::SampleBuilder;
using testing::shellQuoted;
using testing::TempDir;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

int widestLine(const std::string& text) {
    int widest = 0;
    for (const std::string& line : linesOf(text)) widest = std::max(widest, cli::displayWidth(line));
    return widest;
}

// A store holding four days: Claude Code three days ago, nothing the day
// after, Codex yesterday, both today with Codex's quotas.
class TerminalCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        now = Date::fromUnixSeconds(
            std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
        const auto tomorrow = calendar.startOfDayAdding(now, 1);
        if (!tomorrow || tomorrow->secondsSince(now) < 120) GTEST_SKIP() << "too close to midnight in Paris";
        for (int offset = 3; offset >= 0; --offset) days.push_back(dayKey(*calendar.startOfDayAdding(now, -offset), calendar));
    }

    void storeUsage() {
        std::filesystem::create_directories(data());
        SqliteSampleStore store(data() / SqliteSampleStore::fileName);
        UsageSample claude = SampleBuilder(days[3], "claude-code").tokens(120000, 30000).water(400).updatedAt(now);
        claude.requests = 7;
        UsageSample codex = SampleBuilder(days[3], "codex").primaryQuota(40).secondaryQuota(88).updatedAt(now);
        codex.quotaSecondaryResetAt = now.addingSeconds(3 * 3600 + 1800);
        for (const UsageSample& sample : {SampleBuilder(days[0], "claude-code").tokens(500000).updatedAt(now).sample,
                                          SampleBuilder(days[2], "codex").tokens(2000000).cost(1234).updatedAt(now).sample,
                                          claude, codex})
            store.insert(sample);
        store.save();
    }

    std::filesystem::path data() const { return scratch.path() / "data"; }
    std::vector<std::string> arguments(std::vector<std::string> command) const {
        command.insert(command.begin(), TALLOWEN_EXE);
        for (const char* option : {"--home", "--data"}) command.push_back(option);
        command.insert(command.end() - 1, scratch.path().string());
        command.push_back(data().string());
        return command;
    }
    testing::CommandResult piped(const std::string& command) const {
        return testing::runCommand("env TZ=Europe/Paris LC_ALL=fr_FR.UTF-8 " + shellQuoted(TALLOWEN_EXE) + " " +
                                       command + " --home " + shellQuoted(scratch.path().string()) + " --data " +
                                       shellQuoted(data().string()),
                                   scratch.path());
    }

    testing::ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    TempDir scratch;
    Date now;
    std::vector<std::string> days;
};

TEST_F(TerminalCommandsTest, HistoryFitsTheTerminalInColourAndEightyColumnsPiped) {
    storeUsage();
    PseudoTerminal terminal(arguments({"history", "--days", "4"}), 60, 20);
    ASSERT_EQ(terminal.waitForExit(), 0);
    const std::string onTerminal = terminal.output();
    EXPECT_NE(onTerminal.find("\x1b[38;5;"), std::string::npos) << onTerminal;
    EXPECT_EQ(widestLine(onTerminal), 60) << onTerminal;  // yesterday's bar fills the width

    const auto result = piped("history --days 4");
    ASSERT_EQ(result.exitStatus, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput.find('\x1b'), std::string::npos);
    EXPECT_EQ(widestLine(result.standardOutput), 80) << result.standardOutput;
    const auto lines = linesOf(result.standardOutput);
    ASSERT_EQ(lines.size(), 7u) << result.standardOutput;
    EXPECT_EQ(lines[0], "tokens per day, " + days[0] + " to " + days[3]);
    EXPECT_EQ(lines[1], "█ CLAUDE CODE 650 k  ▓ CODEX 2,0 M");
    EXPECT_EQ(lines[4], days[1]);  // a day without use: an empty row
    std::string fullBar;
    for (int column = 0; column < 80 - 10 - 3 - 5; ++column) fullBar += "▓";
    EXPECT_EQ(lines[5], days[2] + "  " + fullBar + " 2,0 M");

    const auto json = piped("history --days 4 --metric cost --json");
    EXPECT_NE(json.standardOutput.find(R"({"dayKey":")" + days[2] + R"(","total":1234,"tools":{"codex":1234}})"),
              std::string::npos)
        << json.standardOutput;
}

// What the last drawing of a panel redrawn in place shows: from its last "home" to the end.
std::string lastScreen(const std::string& output) {
    const size_t home = output.rfind("\x1b[H");
    return home == std::string::npos ? output : output.substr(home);
}

TEST_F(TerminalCommandsTest, WatchFitsTheTerminalAndFollowsItsSize) {
    storeUsage();
    PseudoTerminal terminal(arguments({"watch"}), 80, 24);
    ASSERT_TRUE(terminal.waitFor("[q]")) << terminal.output();
    std::string screen = lastScreen(terminal.output());
    EXPECT_LE(linesOf(screen).size(), 24u) << screen;
    for (const char* shown : {"■", "AUJOURD'HUI", "RECOURS", "150 k", "TOKENS", "CODEX", "7J", "88 %", "[i]", "[q]"})
        EXPECT_NE(screen.find(shown), std::string::npos) << shown << "\n" << screen;
    EXPECT_EQ(screen.find("───"), std::string::npos) << screen;

    size_t before = terminal.output().size();
    terminal.resize(100, 60);  // room for the full panel, separators and big figures
    ASSERT_TRUE(terminal.waitFor("───", before)) << terminal.output().substr(before);
    before = terminal.output().size();
    terminal.resize(30, 10);
    ASSERT_TRUE(terminal.waitFor("Terminal too narrow: 30 columns, the panel needs 40.", before));
    terminal.type("q");
    EXPECT_EQ(terminal.waitForExit(), 0);
}

TEST_F(TerminalCommandsTest, PanelIsCompactOnASmallTerminalAndWholeWhenPiped) {
    storeUsage();
    PseudoTerminal terminal(arguments({"panel"}), 44, 24);
    ASSERT_EQ(terminal.waitForExit(), 0);
    const std::string compact = terminal.output();
    EXPECT_LE(widestLine(compact), 44) << compact;
    EXPECT_LE(linesOf(compact).size(), 24u) << compact;
    const auto week = compact.find("CETTE SEMAINE");  // rows merged: the week's title and figures on one line
    EXPECT_LT(compact.find("7 recours · 2,6 M", week), compact.find('\n', week)) << compact;
    const std::string whole = piped("panel").standardOutput;
    EXPECT_NE(whole.find("────\nQUOTAS\nCODEX\n"), std::string::npos) << whole;
    EXPECT_GT(linesOf(whole).size(), 24u);
}

TEST_F(TerminalCommandsTest, StatusLineReadsTheStoreOnlyAndNeverCreatesIt) {
    EXPECT_EQ(piped("statusline").standardOutput, "0 recours · 0 tokens · 0,0 L\n");
    EXPECT_FALSE(std::filesystem::exists(data() / SqliteSampleStore::fileName));
    storeUsage();
    EXPECT_EQ(piped("statusline").standardOutput, "7 recours · 150 k tokens · 0,4 L · CODEX 7J 88 % reset 3 h\n");
    EXPECT_NE(piped("statusline --json").standardOutput.find(R"("fullestQuota":{"tool":"codex","window":"7J")"),
              std::string::npos);
}

TEST_F(TerminalCommandsTest, VersionHelpAndCsv) {
    storeUsage();
    const std::pair<std::string, std::string> cases[] = {
        {"--version", "tallowen 0.1.0\n"},
        {"help days", "usage: tallowen days [--since DAY]"},
        {"days --help", "usage: tallowen days [--since DAY]"},
        {"history --help", "  tallowen history --days 30 --metric water\n"},
        {"--help", "commands:\n"},
        {"days --csv --since " + days[2],
         "dayKey,tool,sessions,requests,inputTokens,outputTokens,estimatedCostCents,estimatedWaterMilliliters,"
         "updatedAt\n" + days[2] + ",codex,0,0,2000000,0,1234,0,"},
    };
    for (const auto& [command, output] : cases) {
        const auto result = piped(command);
        EXPECT_EQ(result.exitStatus, 0) << command;
        EXPECT_NE(result.standardOutput.find(output), std::string::npos) << command << "\n" << result.standardOutput;
        EXPECT_EQ(result.standardError, "") << command;
    }
}

// A Cursor that holds its database makes the import wait for it: long enough
// for the progress line, which says what is being read.
TEST_F(TerminalCommandsTest, ProgressLineOnATerminalOnlyAndErasedWhenDone) {
    testing::writeUsageHome(scratch, "home");
    sqlite3* cursor = nullptr;
    ASSERT_EQ(sqlite3_open((scratch.path() / "home/Library/Application Support/Cursor/User/globalStorage/state.vscdb").c_str(),
                           &cursor),
              SQLITE_OK);
    const auto importHeldByCursor = [&](std::vector<std::string> command, bool waitForLine) {
        EXPECT_EQ(sqlite3_exec(cursor, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
        command.insert(command.begin(), TALLOWEN_EXE);
        command.insert(command.end(), {"--home", (scratch.path() / "home").string(), "--data", data().string()});
        PseudoTerminal terminal(command, 80, 24);
        if (waitForLine) EXPECT_TRUE(terminal.waitFor("reading logs 4/4 · 0 MB · ")) << terminal.output();
        else std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        sqlite3_exec(cursor, "ROLLBACK", nullptr, nullptr, nullptr);
        EXPECT_EQ(terminal.waitForExit(), 0);
        return terminal.output();
    };
    const std::string shown = importHeldByCursor({"import"}, true);
    EXPECT_NE(shown.find(" MB/s · Cursor database"), std::string::npos) << shown;
    // Erased before the report is written.
    EXPECT_NE(shown.find("\r\x1b[Kdetected tools: claude-code, codex, cursor"), std::string::npos) << shown;
    EXPECT_EQ(importHeldByCursor({"import", "--quiet"}, false).find("reading logs"), std::string::npos);

    sqlite3_exec(cursor, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        sqlite3_exec(cursor, "ROLLBACK", nullptr, nullptr, nullptr);
    });
    const auto result = testing::runCommand(shellQuoted(TALLOWEN_EXE) + " import --home " +
                                                shellQuoted((scratch.path() / "home").string()) + " --data " +
                                                shellQuoted(data().string()),
                                            scratch.path());
    release.join();
    sqlite3_close(cursor);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.standardError, "");
}

TEST(InstallTest, PutsTheCommandItsManualAndThreeCompletionsUnderThePrefix) {
    TempDir prefix;
    const auto result = testing::runCommand("cmake --install " + shellQuoted(TALLOWEN_BUILD_DIR) + " --prefix " +
                                                shellQuoted(prefix.path().string()),
                                            prefix.path());
    ASSERT_EQ(result.exitStatus, 0) << result.standardError;
    for (const char* file : {"share/man/man1/tallowen.1", "share/bash-completion/completions/tallowen",
                             "share/zsh/site-functions/_tallowen", "share/fish/vendor_completions.d/tallowen.fish"})
        EXPECT_TRUE(std::filesystem::is_regular_file(prefix.path() / file)) << file;
    EXPECT_EQ(testing::runCommand(shellQuoted((prefix.path() / "bin/tallowen").string()) + " --version", prefix.path())
                  .standardOutput,
              "tallowen 0.1.0\n");
    // The manual reads without a warning and the completions parse, where the tools are at hand.
    for (const auto& [tool, file] : {std::pair{"groff -man -Tutf8 -ww -z", "share/man/man1/tallowen.1"},
                                     {"bash -n", "share/bash-completion/completions/tallowen"},
                                     {"zsh -n", "share/zsh/site-functions/_tallowen"},
                                     {"fish -n", "share/fish/vendor_completions.d/tallowen.fish"}}) {
        const std::string program = std::string(tool).substr(0, std::string(tool).find(' '));
        const auto check = testing::runCommand("command -v " + program + " >/dev/null || exit 0; " + tool + " " +
                                                   shellQuoted((prefix.path() / file).string()),
                                               prefix.path());
        EXPECT_EQ(check.exitStatus, 0) << file;
        EXPECT_EQ(check.standardError, "") << file;
    }
}

}  // namespace
}  // namespace tallowen
