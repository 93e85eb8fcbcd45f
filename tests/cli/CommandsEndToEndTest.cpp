#include "TallowenRun.hpp"
#include "base/SupportFolderLock.hpp"
#include "model/DaySamplesJson.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/FolderSnapshot.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/Samples.hpp"
#include "support/UsageHome.hpp"

#include <sqlite3.h>

#include <random>
#include <regex>
#include <set>
#include <tuple>

namespace tallowen::testing {
namespace {

// The built command on the logs of `writeUsageHome`.
class CommandsEndToEndTest : public TallowenRun {
protected:
    void SetUp() override { writeUsageHome(scratch, "home"); }
    std::filesystem::path cursorDatabase() const {
        return home() / "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
    }
};

TEST_F(CommandsEndToEndTest, ImportStoresWhatScanPrintsAndDaysListsIt) {
    const std::string samples =
        R"("samples":[{"dayKey":"2025-03-14","tool":"claude-code","sessions":3,"requests":3,"inputTokens":1950,)"
        R"("outputTokens":3390,"episodeHours":[10,23,10],"estimatedCostCents":8,"estimatedWaterMilliliters":404},)"
        R"({"dayKey":"2025-03-14","tool":"codex","sessions":1,"requests":1,"inputTokens":5000,"outputTokens":700,)"
        R"("episodeHours":[11],"estimatedCostCents":1,"estimatedWaterMilliliters":101,"quotaPrimaryPercent":12.5,)"
        R"("quotaPrimaryResetAt":"2025-03-14T14:00:00Z","quotaPlan":"pro"},)"
        R"({"dayKey":"2025-03-14","tool":"cursor","sessions":1,"requests":1,"inputTokens":3000,"outputTokens":400,)"
        R"("episodeHours":[],"estimatedCostCents":0,"estimatedWaterMilliliters":79},)"
        R"({"dayKey":"2025-03-15","tool":"claude-code","sessions":1,"requests":1,"inputTokens":10,"outputTokens":0,)"
        R"("episodeHours":[8],"estimatedCostCents":0,"estimatedWaterMilliliters":0},)"
        R"({"dayKey":"2025-03-15","tool":"codex","sessions":1,"requests":1,"inputTokens":800,"outputTokens":200,)"
        R"("episodeHours":[12],"estimatedCostCents":0,"estimatedWaterMilliliters":32}]})";
    EXPECT_EQ(std::regex_replace(tallowen("import --json").standardOutput, std::regex(R"("elapsed[^,]+)"), "…"),
              R"({"outcome":"completed","detectedTools":["claude-code","codex","cursor"],"samplesInserted":5,)"
              R"("samplesUpdated":0,"samplesUnchanged":0,"duplicatesRemoved":0,"filesRead":4,"filesReused":0,…,)"
              R"("lastError":null})" "\n");
    const std::string days = tallowen("days --json").standardOutput;
    EXPECT_EQ(std::regex_replace(days, std::regex(R"(,"updatedAt":"[^"]*")"), ""), "{" + samples + "\n");
    const auto selected = linesOf(tallowen("days --since 2025-03-15 --tool codex").standardOutput);
    ASSERT_EQ(selected.size(), 2u);
    EXPECT_EQ(selected[1].rfind("2025-03-15  codex                    1         1           800           200        "
                                "0.00         32  ", 0), 0u) << selected[1];
    // Scanning after the import reuses what it read.
    EXPECT_EQ(tallowen("scan --json").standardOutput,
              R"({"detected":["claude-code","codex","cursor"],)" + samples + "\n");
    const std::string table = tallowen("scan").standardOutput;
    EXPECT_NE(table.find("\n2025-03-14  codex               1         1          5000           700        0.01        "
                         "101  12% / - pro\n"), npos) << table;
    EXPECT_NE(table.find("\nfiles read: 0, reused: 4\n"), npos);
}

TEST_F(CommandsEndToEndTest, WhileAnotherProcessImportsTheRequestIsDroppedAndThePanelShowsTheStore) {
    std::filesystem::create_directories(data());
    const SupportFolderLock held = SupportFolderLock::tryAcquire(data());
    ASSERT_TRUE(held.acquired());
    EXPECT_EQ(tallowen("import").standardOutput, "import dropped: another tallowen is importing into this data folder\n");
    const CommandResult panel = tallowen("");
    EXPECT_EQ(panel.exitStatus, 0);
    EXPECT_EQ(panel.standardError,
              "tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n");
    EXPECT_NE(panel.standardOutput.find("■ TALLOWEN_"), npos);
    EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite"));
}

TEST_F(CommandsEndToEndTest, EachFailureIsOneLineWithItsExitStatus) {
    scratch.write("data/store.sqlite", std::string(3000, 'z'));
    std::vector<std::tuple<std::string, int, std::string>> cases = {
        {"--bogus", 2, "unknown option: --bogus (see tallowen --help)"},
        {"days --since 2025-3-1", 2,
         "days: --since needs a day written YYYY-MM-DD, not 2025-3-1 (see tallowen help days)"},
        {"days --json --csv", 2, "days: --json and --csv both set: give one (see tallowen help days)"},
        {"scan --tool codex", 2, "scan: unknown option: --tool (see tallowen help scan)"},
        {"history --metric joy", 2,
         "history: --metric takes tokens, requests, water or cost, not joy (see tallowen help history)"},
        {"help nothing", 2, "help: no command named nothing (see tallowen --help)"},
        {"fly", 2, "unknown command: fly (see tallowen --help)"},
    };
    for (const char* command : {"statusline", "history", "panel", "summary", "days"})
        cases.emplace_back(command, 1, std::string(command) + ": Store illisible : file is not a database");
    for (const auto& [arguments, exitStatus, error] : cases) {
        SCOPED_TRACE(arguments);
        const CommandResult result = tallowen(arguments);
        EXPECT_EQ(result.exitStatus, exitStatus);
        EXPECT_EQ(result.standardError, "tallowen: " + error + "\n");
        EXPECT_EQ(result.standardOutput, "");
    }
    const CommandResult import = tallowen("import");
    EXPECT_EQ(import.exitStatus, 1);
    EXPECT_NE(import.standardOutput.find("\nlastError: Store illisible : "), npos);
    std::filesystem::remove_all(home());
    const CommandResult missingHome = tallowen("panel");
    EXPECT_EQ(missingHome.exitStatus, 1);
    EXPECT_EQ(missingHome.standardError, "tallowen: panel: cannot read the home folder " + home().string() + "\n");
}

// What Tallowen promises its user, checked on the built command: it never
// writes where the tools keep their logs, no word of a conversation leaves
// them, a locked Cursor database costs one wait and nothing stored, and a
// process killed at any moment leaves what a clean run would.
using PromisesEndToEndTest = CommandsEndToEndTest;

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
    const std::string planted = "PRAGMA journal_mode=WAL; INSERT INTO cursorDiskKV VALUES ('composerData:" +
                                conversation + "', '{\"createdAt\":1741950000000,\"name\":\"" + secret +
                                "\"}'), ('bubbleId:" + conversation + ":1', '{\"text\":\"" + secret +
                                "\",\"tokenCount\":{\"inputTokens\":4,\"outputTokens\":2}}')";
    sqlite3* cursor = nullptr;
    sqlite3_open(cursorDatabase().c_str(), &cursor);
    EXPECT_EQ(sqlite3_exec(cursor, planted.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(cursor);
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
    const auto run = [&](const char* sql) {
        EXPECT_EQ(sqlite3_exec(cursor, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    };
    const auto cursorDay = [&] {
        const std::string days = tallowen("days --tool cursor --json").standardOutput;
        return days.substr(0, days.find("\"updatedAt\""));
    };
    run("BEGIN EXCLUSIVE");
    PseudoTerminal shown(argv({"import"}), 80, 24);
    EXPECT_TRUE(shown.waitFor("reading logs 4/4 · 0 MB · ")) << shown.output();
    run("ROLLBACK");
    EXPECT_EQ(shown.waitForExit(), 0);
    EXPECT_NE(shown.output().find(" MB/s · Cursor database"), npos) << shown.output();
    EXPECT_NE(shown.output().find("\r\x1b[Kdetected tools: claude-code, codex, cursor"), npos);  // erased first
    const std::string stored = cursorDay();
    EXPECT_NE(stored.find(R"("inputTokens":3000,"outputTokens":400)"), npos) << stored;

    run("UPDATE cursorDiskKV SET value = json_set(value, '$.tokenCount.inputTokens', 9999) "
        "WHERE key LIKE 'bubbleId:%'");
    run("BEGIN EXCLUSIVE");
    const CommandResult piped = tallowen("import");
    EXPECT_EQ(piped.exitStatus, 0);
    EXPECT_EQ(piped.standardError, "");
    PseudoTerminal quiet(argv({"import", "--quiet"}), 80, 24);
    EXPECT_EQ(quiet.waitForExit(), 0);
    EXPECT_EQ(quiet.output().find("reading logs"), npos) << quiet.output();
    run("ROLLBACK");
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
}

}  // namespace
}  // namespace tallowen::testing
