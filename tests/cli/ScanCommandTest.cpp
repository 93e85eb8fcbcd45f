#include "support/CursorDatabase.hpp"
#include "support/RunCommand.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tallowen {
namespace {

using testing::runCommand;
using testing::shellQuoted;
using testing::TempDir;

// Paris is one hour ahead of UTC in these March days.
const std::string claudeLog =
    R"({"type":"user","message":{"role":"user","content":"hello"},"timestamp":"2025-03-14T09:00:00.000Z"})"
    "\n"
    R"({"type":"assistant","timestamp":"2025-03-14T09:15:02.500Z","message":{"model":"claude-opus-4-1-20250805",)"
    R"("usage":{"input_tokens":1000,"cache_creation_input_tokens":2000,"cache_read_input_tokens":100000,)"
    R"("output_tokens":5000}}})"
    "\n"
    // Cut short, as when Claude Code is still writing.
    R"({"type":"assistant","timestamp":"2025-03-14T09:20:00Z","message":{"model":"claude-opus-4-1","usage":{"input_)"
    "\n"
    R"({"type":"assistant","timestamp":"2025-03-14T13:00:00Z","message":{"model":"claude-haiku-4-5",)"
    R"("usage":{"input_tokens":100,"output_tokens":1000}}})"
    "\r\n"
    "{\"type\":\"assistant\",\"timestamp\":\"2025-03-14T13:05:00Z\",\"message\":{\"model\":\"\xff\xfe\","
    "\"usage\":{\"input_tokens\":100000,\"output_tokens\":1}}}\n"
    R"({"type":"assistant","timestamp":"2025-03-14T23:30:00Z","message":{"model":"claude-opus-4-1",)"
    R"("usage":{"input_tokens":200,"output_tokens":40}}})";

const std::string codexLog =
    R"({"timestamp":"2025-03-14T09:59:00.000Z","type":"event_msg","payload":{"type":"thread_settings_applied",)"
    R"("thread_settings":{"model":"gpt-5"}}})"
    "\n"
    R"({"timestamp":"2025-03-14T10:00:00.000Z","type":"event_msg","payload":{"type":"token_count","info":)"
    R"({"last_token_usage":{"input_tokens":100000,"cached_input_tokens":80000,"output_tokens":10100}},)"
    R"("rate_limits":{"primary":{"used_percent":42.5,"resets_at":1741950000},)"
    R"("secondary":{"used_percent":10.0,"resets_at":1742500000.0},"plan_type":"plus"}}})"
    "\n"
    R"({"timestamp":"2025-03-14T12:00:00.250Z","type":"event_msg","payload":{"type":"token_count","info":null,)"
    R"("rate_limits":{"primary":{"used_percent":50.0,"resets_at":1741960800},"plan_type":"plus"}}})"
    "\n";

const std::string archivedCodexLog =
    R"({"timestamp":"2025-03-15T08:00:00Z","type":"event_msg","payload":{"type":"token_count","info":)"
    R"({"last_token_usage":{"input_tokens":2000,"output_tokens":500}}}})"
    "\n";

const std::string expectedJson =
    R"({"detected":["claude-code","codex","cursor"],"samples":[)"
    R"({"dayKey":"2025-03-14","tool":"claude-code","sessions":2,"requests":2,"inputTokens":3100,"outputTokens":6000,)"
    R"("episodeHours":[10,14],"estimatedCostCents":20,"estimatedWaterMilliliters":710},)"
    R"({"dayKey":"2025-03-14","tool":"codex","sessions":1,"requests":1,"inputTokens":100000,"outputTokens":10100,)"
    R"("episodeHours":[11],"estimatedCostCents":24,"estimatedWaterMilliliters":1361,"quotaPrimaryPercent":50,)"
    R"("quotaPrimaryResetAt":"2025-03-14T14:00:00Z","quotaPlan":"plus"},)"
    R"({"dayKey":"2025-03-14","tool":"cursor","sessions":1,"requests":1,"inputTokens":1000,"outputTokens":1000,)"
    R"("episodeHours":[],"estimatedCostCents":0,"estimatedWaterMilliliters":124},)"
    R"({"dayKey":"2025-03-15","tool":"claude-code","sessions":1,"requests":1,"inputTokens":200,"outputTokens":40,)"
    R"("episodeHours":[0],"estimatedCostCents":0,"estimatedWaterMilliliters":7},)"
    R"({"dayKey":"2025-03-15","tool":"codex","sessions":1,"requests":1,"inputTokens":2000,"outputTokens":500,)"
    R"("episodeHours":[9],"estimatedCostCents":1,"estimatedWaterMilliliters":79}]})"
    "\n";

class ScanCommandTest : public ::testing::Test {
protected:
    TempDir scratch;

    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path data() const { return scratch.path() / "data"; }

    void writeHome() const {
        scratch.write("home/.claude/projects/-home-dev-proj/sess1.jsonl", claudeLog);
        scratch.write("home/.claude/projects/-home-dev-proj/empty.jsonl", "");
        scratch.write("home/.claude/projects/.trash/old.jsonl", claudeLog);
        scratch.write("home/.claude/projects/-home-dev-proj/upper.JSONL", claudeLog);
        scratch.write("home/.codex/sessions/2025/03/14/rollout-a.jsonl", codexLog);
        scratch.write("home/.codex/archived_sessions/rollout-b.jsonl", archivedCodexLog);
        testing::writeCursorDatabase(home() / "Library/Application Support/Cursor/User/globalStorage/state.vscdb",
                                     {{"composerData:" + std::string(36, 'c'), testing::cursorCreatedAt(1741993140000)},
                                      {"bubbleId:" + std::string(36, 'c') + ":1", testing::cursorTokenCount(1000, 1000)}});
    }

    testing::CommandResult scanWith(const std::string& arguments) const {
        return runCommand("env TZ=Europe/Paris LC_ALL=C.UTF-8 " + shellQuoted(TALLOWEN_EXE) + " scan " + arguments,
                          scratch.path());
    }
    testing::CommandResult scan(const std::string& extra = "") const {
        return scanWith("--home " + shellQuoted(home().string()) + " --data " + shellQuoted(data().string()) + extra);
    }
};

TEST_F(ScanCommandTest, PrintsEachDayOfEachToolAsJsonOrAsATableAndTheSameWhenWarm) {
    writeHome();
    const auto cold = scan(" --json");
    EXPECT_EQ(cold.exitStatus, 0) << cold.standardError;
    EXPECT_EQ(cold.standardOutput, expectedJson);
    EXPECT_EQ(cold.standardError, "");
    ASSERT_TRUE(std::filesystem::exists(data() / "import-state.json"));

    const auto warm = scan(" --json");
    EXPECT_EQ(warm.exitStatus, 0);
    EXPECT_EQ(warm.standardOutput, expectedJson);
    const auto table = scan();
    EXPECT_EQ(table.exitStatus, 0);
    const std::string& text = table.standardOutput;
    EXPECT_EQ(text.rfind("detected: claude-code codex cursor\n", 0), 0u) << text;
    EXPECT_NE(text.find("2025-03-14  codex"), std::string::npos) << text;
    EXPECT_NE(text.find("50% / - plus\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nfiles read: 0, reused: 4\n"), std::string::npos) << text;
}

TEST_F(ScanCommandTest, ALongPlanNameEndsItsOwnTableRow) {
    const std::string plan(600, 'p');
    scratch.write("home/.codex/sessions/a.jsonl",
                  R"({"timestamp":"2025-03-14T10:00:00Z","payload":{"type":"token_count","info":null,)"
                  R"("rate_limits":{"primary":{"used_percent":50.0},"plan_type":")" + plan + "\"}}}\n");
    scratch.write("home/.codex/sessions/b.jsonl",
                  R"({"timestamp":"2025-03-15T10:00:00Z","payload":{"type":"token_count","info":null,)"
                  R"("rate_limits":{"plan_type":"plus"}}})" "\n");
    const auto table = scan();
    EXPECT_EQ(table.exitStatus, 0);
    EXPECT_NE(table.standardOutput.find("50% / - " + plan + "\n2025-03-15  codex "), std::string::npos)
        << table.standardOutput;
}

TEST_F(ScanCommandTest, AStateFileThatCannotBeUsedMeansAFullReadNotAFailure) {
    writeHome();
    const std::string states[] = {"not json", R"({"version":5,"files":{"/x)",
                                  R"({"version":4,"files":{}})", ""};
    for (const std::string& contents : states) {
        SCOPED_TRACE(contents);
        scratch.write("data/import-state.json", contents);
        const auto result = scan(" --json");
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.standardOutput, expectedJson);
    }
}

TEST_F(ScanCommandTest, AHomeWithoutToolsOrWithOnlyBadLinesSucceeds) {
    std::filesystem::create_directories(home());
    auto result = scan(" --json");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.standardOutput, "{\"detected\":[],\"samples\":[]}\n");

    scratch.write("home/.claude/projects/p/bad.jsonl", "{\"type\":\"assistant\",\"usage\" \xff\n\r\n{{{{\n");
    scratch.write("home/Library/Application Support/Cursor/User/globalStorage/state.vscdb", "not a database");
    result = scan(" --json");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.standardOutput, "{\"detected\":[\"claude-code\",\"cursor\"],\"samples\":[]}\n");
}

TEST_F(ScanCommandTest, UnknownOptionsAndMissingFoldersFailWithOneLine) {
    std::filesystem::create_directories(home());
    const std::string invocations[] = {
        "--bogus",
        "--home " + shellQuoted(home().string()) + " --json extra",
        "--home",
        "--home " + shellQuoted((scratch.path() / "no-such-home").string()),
        "--home " + shellQuoted(home().string()) + " --data " + shellQuoted((scratch.path() / "file/sub").string()),
    };
    scratch.write("file", "a file where a folder should be");
    for (const std::string& arguments : invocations) {
        SCOPED_TRACE(arguments);
        const auto result = scanWith(arguments);
        EXPECT_NE(result.exitStatus, 0);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(result.standardError.rfind("tallowen: ", 0), 0u) << result.standardError;
        EXPECT_EQ(std::count(result.standardError.begin(), result.standardError.end(), '\n'), 1);
    }
}

}  // namespace
}  // namespace tallowen
