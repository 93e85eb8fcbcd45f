// What Tallowen promises its user, checked on the built command: it never
// writes where the tools keep their logs, no word of a conversation leaves
// them, a locked Cursor database costs one wait and nothing stored, and a
// process killed at any moment leaves what a clean run would.

#include "TallowenRun.hpp"
#include "model/DaySamplesJson.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/FolderSnapshot.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/Samples.hpp"
#include "support/UsageHome.hpp"

#include <sqlite3.h>

#include <random>
#include <set>

namespace tallowen::testing {
namespace {

class PromisesEndToEndTest : public TallowenRun {
protected:
    void SetUp() override { writeUsageHome(scratch, "home"); }
    std::filesystem::path cursorDatabase() const {
        return home() / "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
    }
    void execute(const std::string& sql) const {
        sqlite3* database = nullptr;
        sqlite3_open(cursorDatabase().c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_close(database);
    }
};

// Cursor's database in WAL mode, where a careless reader would leave a shared-memory file beside it.
TEST_F(PromisesEndToEndTest, NoCommandChangesTheHomeFolderAndAPlantedSecretAppearsInNoOutputAndNoStoredFile) {
    const std::string secret = "Zq7plantedSECRET";
    scratch.write("home/.claude/projects/-home-dev-app/talk.jsonl",
                  R"({"type":"user","timestamp":"2025-03-14T10:00:00Z","cwd":"/home/dev/)" + secret +
                      R"(","message":{"role":"user","content":"tell me about )" + secret + R"("}})" "\n"
                      R"({"type":"assistant","timestamp":"2025-03-14T10:00:05Z","message":{"model":"claude-sonnet-4-5",)"
                      R"("content":[{"type":"text","text":"here is )" + secret + R"("},{"type":"tool_use",)"
                      R"("input":{"file_path":"/srv/)" + secret + R"(.txt"}}],"usage":{"input_tokens":5,"output_tokens":9}}})" "\n"
                      R"({"type":"user","timestamp":"2025-03-14T10:00:07Z","message":{"content":[{"type":"tool_result",)"
                      R"("content":"cat: )" + secret + R"("}]}})" "\n");
    scratch.write("home/.codex/sessions/2025/03/14/rollout-t.jsonl",
                  R"({"timestamp":"2025-03-14T11:00:00Z","type":"response_item","payload":{"type":"message",)"
                  R"("content":")" + secret + R"(","cwd":"/work/)" + secret + R"("}})" "\n"
                      R"({"timestamp":"2025-03-14T11:00:01Z","type":"response_item","payload":)"
                      R"({"type":"function_call_output","output":")" + secret + R"("}})" "\n");
    const std::string conversation(36, 'e');
    execute("PRAGMA journal_mode=WAL; INSERT INTO cursorDiskKV VALUES ('composerData:" + conversation +
            "', '{\"createdAt\":1741950000000,\"name\":\"" + secret + "\"}'), ('bubbleId:" + conversation +
            ":1', '{\"text\":\"" + secret + "\",\"tokenCount\":{\"inputTokens\":4,\"outputTokens\":2}}')");
    const auto before = folderSnapshot(home());
    std::string outputs;
    for (const char* command : {"import", "import --json", "scan", "scan --json", "days --json", "summary --json",
                                "panel", ""}) {
        const CommandResult result = tallowen(command);
        EXPECT_EQ(result.exitStatus, 0) << command << result.standardError;
        outputs += result.standardOutput + result.standardError;
    }
    EXPECT_EQ(folderSnapshot(home()), before);
    EXPECT_NE(outputs.find("claude-code"), npos);
    EXPECT_EQ(outputs.find(secret), npos);
    const auto files = folderSnapshot(data());
    EXPECT_TRUE(files.count("import-state.json"));
    for (const auto& [name, contents] : files) EXPECT_EQ(contents.find(secret), npos) << name;
}

// The editor holds its database under an exclusive lock: an import waits for it, saying on a terminal what it
// reads, and reads it once let go; held beyond the wait, Cursor's stored days are left as they were.
TEST_F(PromisesEndToEndTest, ALockedCursorDatabaseIsReadAfterTheWaitOrLeftAsStoredAndTheWaitShownOnATerminalOnly) {
    sqlite3* cursor = nullptr;
    ASSERT_EQ(sqlite3_open(cursorDatabase().c_str(), &cursor), SQLITE_OK);
    const auto hold = [&](bool held) {
        EXPECT_EQ(sqlite3_exec(cursor, held ? "BEGIN EXCLUSIVE" : "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    };
    const auto cursorDay = [&] {
        const std::string days = tallowen("days --tool cursor --json").standardOutput;
        return days.substr(0, days.find("\"updatedAt\""));
    };
    hold(true);
    PseudoTerminal shown(argv({"import"}), 80, 24);
    EXPECT_TRUE(shown.waitFor("reading logs 4/4 · 0 MB · ")) << shown.output();
    hold(false);
    EXPECT_EQ(shown.waitForExit(), 0);
    EXPECT_NE(shown.output().find(" MB/s · Cursor database"), npos) << shown.output();
    EXPECT_NE(shown.output().find("\r\x1b[Kdetected tools: claude-code, codex, cursor"), npos);  // erased first
    const std::string stored = cursorDay();
    EXPECT_NE(stored.find(R"("inputTokens":3000,"outputTokens":400)"), npos) << stored;

    execute("UPDATE cursorDiskKV SET value = json_set(value, '$.tokenCount.inputTokens', 9999) "
            "WHERE key LIKE 'bubbleId:%'");
    hold(true);
    const CommandResult piped = tallowen("import");
    EXPECT_EQ(piped.exitStatus, 0);
    EXPECT_EQ(piped.standardError, "");
    PseudoTerminal quiet(argv({"import", "--quiet"}), 80, 24);
    EXPECT_EQ(quiet.waitForExit(), 0);
    EXPECT_EQ(quiet.output().find("reading logs"), npos) << quiet.output();
    hold(false);
    sqlite3_close(cursor);
    EXPECT_EQ(cursorDay(), stored);
}

TEST_F(PromisesEndToEndTest, KillingImportsAndPurgesAtRandomMomentsEndsWithTheRecordsOfACleanImport) {
    for (int i = 0; i < 300; ++i)
        scratch.write("home/.claude/projects/many/s" + std::to_string(i) + ".jsonl",
                      R"({"type":"assistant","timestamp":"2025-03-1)" + std::to_string(i % 7) +
                          R"(T09:00:00Z","message":{"usage":{"input_tokens":)" + std::to_string(i) +
                          R"(,"output_tokens":1}}})" "\n");
    // Duplicates from another device make the one-time purge work too.
    std::filesystem::create_directories(data());
    {
        SqliteSampleStore store(data() / SqliteSampleStore::fileName);
        for (int i = 0; i < 400; ++i)
            store.insert(slotSample("2025-03-1" + std::to_string(i % 5), i % 2 ? "claude-code" : "phone-chatgpt",
                                    Date{760000000.0 + i}, i));
        store.save();
    }
    const auto clean = scratch.path() / "clean";
    std::filesystem::copy(data(), clean);
    ASSERT_EQ(runCommand(commandLine("import") + " --data " + shellQuoted(clean.string()), scratch.path()).exitStatus, 0);

    std::mt19937 random(11);
    for (int round = 0; round < 25; ++round)
        runCommand(commandLine("import") + " >/dev/null & sleep " + std::to_string((random() % 120) / 1000.0) +
                       "; kill -9 $! 2>/dev/null; wait", scratch.path());
    ASSERT_EQ(tallowen("import").exitStatus, 0);
    // Every stored record, values only (no identifier, no time of writing), in order.
    const auto records = [](const std::filesystem::path& folder) {
        std::multiset<std::string> all;
        for (const UsageSample& sample : SqliteSampleStore(folder / SqliteSampleStore::fileName).fetchAll()) {
            JsonWriter json;
            writeDaySampleJson(json, sample, false);
            all.insert(json.take());
        }
        return all;
    };
    EXPECT_EQ(records(data()), records(clean));
    for (const auto& file : std::filesystem::directory_iterator(data()))
        EXPECT_EQ(file.path().filename().string().find(".tmp-"), npos) << file.path();
}

}  // namespace
}  // namespace tallowen::testing
