// What Tallowen promises its user, checked on the built command: it never
// writes where the tools keep their logs, no word of a conversation leaves
// them, a locked Cursor database costs one wait and nothing stored, and a
// process killed at any moment leaves what a clean run would.

#include "store/SqliteSampleStore.hpp"
#include "support/CursorDatabase.hpp"
#include "support/FolderSnapshot.hpp"
#include "support/RunCommand.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tallowen {
namespace {

using namespace std::chrono_literals;
using testing::CommandResult;
using testing::shellQuoted;
using testing::TempDir;

const std::filesystem::path cursorFolder = "home/Library/Application Support/Cursor/User/globalStorage";

class PromisesEndToEndTest : public ::testing::Test {
protected:
    TempDir scratch;

    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path data() const { return scratch.path() / "data"; }
    std::filesystem::path cursorDatabase() const { return scratch.path() / cursorFolder / "state.vscdb"; }

    CommandResult tallowen(const std::string& arguments) const {
        return testing::runCommand("env TZ=Europe/Paris LC_ALL=C.UTF-8 NO_COLOR=1 " + shellQuoted(TALLOWEN_EXE) + " " +
                                       arguments + " --home " + shellQuoted(home().string()) + " --data " +
                                       shellQuoted(data().string()),
                                   scratch.path());
    }

    void execute(const std::string& sql) const {
        sqlite3* database = nullptr;
        sqlite3_open(cursorDatabase().c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_close(database);
    }

    // Every stored record, values only (no identifier, no time of writing), in order.
    std::vector<std::string> storedRecords(const std::filesystem::path& dataFolder) const {
        std::vector<std::string> records;
        for (const UsageSample& s : SqliteSampleStore(dataFolder / SqliteSampleStore::fileName).fetchAll()) {
            std::string hours;
            for (const int64_t hour : s.episodeHours) hours += std::to_string(hour) + ",";
            records.push_back(s.dayKey + " " + s.tool + " " + std::to_string(s.sessions) + " " +
                              std::to_string(s.requests) + " " + std::to_string(s.inputTokens) + " " +
                              std::to_string(s.outputTokens) + " " + hours + " " +
                              std::to_string(s.estimatedCostCents) + " " +
                              std::to_string(s.estimatedWaterMilliliters) + " " + s.quotaPlan.value_or("-"));
        }
        std::sort(records.begin(), records.end());
        return records;
    }
};

TEST_F(PromisesEndToEndTest, LogsAndCursorsFolderStayByteForByteWalOrRollbackEvenWhereNobodyMayWrite) {
    for (const bool wal : {true, false}) {
        for (const bool writable : {true, false}) {
            SCOPED_TRACE(std::string(wal ? "WAL" : "rollback") + (writable ? ", writable" : ", read-only"));
            std::filesystem::remove_all(scratch.path() / "home");
            std::filesystem::remove_all(data());
            testing::writeUsageHome(scratch, "home");
            if (wal) execute("PRAGMA journal_mode=WAL");
            if (!writable) {
                for (const auto& folder : std::filesystem::recursive_directory_iterator(home()))
                    if (folder.is_directory())
                        std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_write,
                                                     std::filesystem::perm_options::remove);
            }
            const auto before = testing::folderSnapshot(home());
            const CommandResult import = tallowen("import");
            const CommandResult scan = tallowen("scan --json");
            EXPECT_EQ(testing::folderSnapshot(home()), before);
            EXPECT_NE(import.standardOutput.find("detected tools: claude-code, codex, cursor"), std::string::npos)
                << import.standardOutput;
            // Cursor's one conversation: 3000 tokens in, read even where its folder is closed to us.
            EXPECT_NE(scan.standardOutput.find(R"("tool":"cursor","sessions":1,"requests":1,"inputTokens":3000)"),
                      std::string::npos)
                << scan.standardOutput;
            for (const auto& folder : std::filesystem::recursive_directory_iterator(home()))
                if (folder.is_directory())
                    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_write,
                                                 std::filesystem::perm_options::add);
        }
    }
}

TEST_F(PromisesEndToEndTest, APlantedSecretAppearsInNoOutputAndNoFileOfTheDataFolder) {
    const std::string secret = "Zq7plantedSECRET";
    testing::writeUsageHome(scratch, "home");
    scratch.write("home/.claude/projects/-home-dev-app/talk.jsonl",
                  R"({"type":"user","timestamp":"2025-03-14T10:00:00Z","cwd":"/home/dev/)" + secret +
                      R"(","message":{"role":"user","content":"tell me about )" + secret + R"("}})"
                      "\n"
                      R"({"type":"assistant","timestamp":"2025-03-14T10:00:05Z","message":{"model":"claude-sonnet-4-5",)"
                      R"("content":[{"type":"text","text":"here is )" + secret + R"("},{"type":"tool_use",)"
                      R"("input":{"file_path":"/srv/)" + secret + R"(.txt"}}],"usage":{"input_tokens":5,"output_tokens":9}}})"
                      "\n"
                      R"({"type":"user","timestamp":"2025-03-14T10:00:07Z","message":{"content":[{"type":"tool_result",)"
                      R"("content":"cat: )" + secret + R"("}]}})"
                      "\n");
    scratch.write("home/.codex/sessions/2025/03/14/rollout-t.jsonl",
                  R"({"timestamp":"2025-03-14T11:00:00Z","type":"response_item","payload":{"type":"message",)"
                  R"("content":")" + secret + R"(","cwd":"/work/)" + secret + R"("}})"
                      "\n"
                      R"({"timestamp":"2025-03-14T11:00:01Z","type":"response_item","payload":)"
                      R"({"type":"function_call_output","output":")" + secret + R"("}})"
                      "\n");
    const std::string conversation(36, 'e');
    execute("INSERT INTO cursorDiskKV VALUES ('composerData:" + conversation +
            "', '{\"createdAt\":1741950000000,\"name\":\"" + secret + "\"}'), ('bubbleId:" + conversation +
            ":1', '{\"text\":\"" + secret + "\",\"tokenCount\":{\"inputTokens\":4,\"outputTokens\":2}}')");

    std::string outputs;
    for (const char* command : {"import", "import --json", "scan", "scan --json", "days --json", "summary --json",
                                "panel", ""}) {
        const CommandResult result = tallowen(command);
        EXPECT_EQ(result.exitStatus, 0) << command << result.standardError;
        outputs += result.standardOutput + result.standardError;
    }
    EXPECT_NE(outputs.find("claude-code"), std::string::npos);
    EXPECT_EQ(outputs.find(secret), std::string::npos);
    const auto files = testing::folderSnapshot(data());
    EXPECT_TRUE(files.count("import-state.json"));
    for (const auto& [name, contents] : files) EXPECT_EQ(contents.find(secret), std::string::npos) << name;
}

// Another process holds Cursor's database under an exclusive lock for a while.
class CursorLock {
public:
    CursorLock(const std::filesystem::path& database, int seconds) {
        int ready[2];
        if (::pipe(ready) != 0) return;
        holder_ = ::fork();
        if (holder_ == 0) {
            sqlite3* connection = nullptr;
            sqlite3_open(database.c_str(), &connection);
            sqlite3_exec(connection, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
            (void)!::write(ready[1], "r", 1);
            ::sleep(static_cast<unsigned>(seconds));
            sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr);
            ::_exit(0);
        }
        char byte = 0;
        (void)!::read(ready[0], &byte, 1);
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~CursorLock() {
        if (holder_ <= 0) return;
        ::kill(holder_, SIGKILL);
        ::waitpid(holder_, nullptr, 0);
    }

private:
    pid_t holder_ = -1;
};

TEST_F(PromisesEndToEndTest, ACursorDatabaseLockedTwoSecondsIsReadAfterTheWaitAndOneLockedLongerIsLeftAsStored) {
    testing::writeUsageHome(scratch, "home");
    {
        const CursorLock lock(cursorDatabase(), 2);
        const CommandResult waited = tallowen("import");
        EXPECT_EQ(waited.exitStatus, 0) << waited.standardError;
    }
    const auto cursorDay = [&] {
        const std::string days = tallowen("days --tool cursor --json").standardOutput;
        return days.substr(0, days.find("\"updatedAt\""));
    };
    const std::string stored = cursorDay();
    EXPECT_NE(stored.find(R"("inputTokens":3000,"outputTokens":400)"), std::string::npos) << stored;

    // The editor's tokens change, but it keeps the database locked beyond the wait.
    execute("UPDATE cursorDiskKV SET value = json_set(value, '$.tokenCount.inputTokens', 9999) "
            "WHERE key LIKE 'bubbleId:%'");
    const CursorLock lock(cursorDatabase(), 10);
    const CommandResult blocked = tallowen("import");
    EXPECT_EQ(blocked.exitStatus, 0) << blocked.standardError;
    EXPECT_EQ(cursorDay(), stored);
}

pid_t spawnImport(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    char zone[] = "TZ=Europe/Paris";
    char* environment[] = {zone, nullptr};
    pid_t pid = -1;
    posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environment);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

TEST_F(PromisesEndToEndTest, KillingImportsAndPurgesAtRandomMomentsEndsWithTheRecordsOfACleanImport) {
    testing::writeUsageHome(scratch, "home");
    for (int i = 0; i < 300; ++i)
        scratch.write("home/.claude/projects/many/s" + std::to_string(i) + ".jsonl",
                      R"({"type":"assistant","timestamp":"2025-03-1)" + std::to_string(i % 7) +
                          R"(T09:00:00Z","message":{"usage":{"input_tokens":)" + std::to_string(i) +
                          R"(,"output_tokens":1}}})"
                          "\n");
    // Duplicates from another device make the one-time purge work too.
    std::filesystem::create_directories(data());
    {
        SqliteSampleStore store(data() / SqliteSampleStore::fileName);
        for (int i = 0; i < 400; ++i) {
            UsageSample sample = UsageSample::created(Date{760000000.0 + i});
            sample.dayKey = "2025-03-1" + std::to_string(i % 5);
            sample.tool = i % 2 ? "claude-code" : "phone-chatgpt";
            sample.requests = i;
            store.insert(sample);
        }
        store.save();
    }
    const auto clean = scratch.path() / "clean";
    std::filesystem::copy(data(), clean);
    ASSERT_EQ(testing::runCommand("env TZ=Europe/Paris " + shellQuoted(TALLOWEN_EXE) + " import --home " +
                                      shellQuoted(home().string()) + " --data " + shellQuoted(clean.string()),
                                  scratch.path())
                  .exitStatus,
              0);

    std::mt19937 random(11);
    for (int round = 0; round < 25; ++round) {
        const pid_t pid = spawnImport({TALLOWEN_EXE, "import", "--home", home().string(), "--data", data().string()});
        ASSERT_GT(pid, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 120));
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    ASSERT_EQ(tallowen("import").exitStatus, 0);
    EXPECT_EQ(storedRecords(data()), storedRecords(clean));
    for (const auto& file : std::filesystem::directory_iterator(data()))
        EXPECT_EQ(file.path().filename().string().find(".tmp-"), std::string::npos) << file.path();
}

}  // namespace
}  // namespace tallowen
