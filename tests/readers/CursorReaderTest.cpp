#include "import/CursorDayCacheFile.hpp"
#include "readers/CursorConnection.hpp"
#include "readers/CursorDayCache.hpp"
#include "readers/CursorReader.hpp"
#include "support/CursorDatabase.hpp"
#include "support/Dates.hpp"
#include "support/FolderSnapshot.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tallowen {
namespace {

using namespace std::chrono_literals;
using testing::cursorCreatedAt;
using testing::cursorTokenCount;
namespace fs = std::filesystem;

const fs::path macPlace = "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
const std::string conversation(36, 'c');

timespec modified(const fs::path& path) {
    struct stat status {};
    ::stat(path.c_str(), &status);
    return status.st_mtim;
}

void setModified(const fs::path& path, timespec time) {
    const timespec times[2] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

void execute(const fs::path& database, const char* sql) {
    sqlite3* connection = nullptr;
    sqlite3_open(database.c_str(), &connection);
    sqlite3_exec(connection, sql, nullptr, nullptr, nullptr);
    sqlite3_close(connection);
}

int64_t inputTokens(const std::optional<DayMap>& days) {
    int64_t tokens = 0;
    for (const auto& [key, day] : days.value()) tokens += day.inputTokens;
    return tokens;
}

class CursorReaderTest : public ::testing::Test {
protected:
    std::optional<testing::ScopedTimeZone> zone{std::in_place, "Europe/Paris"};
    testing::TempDir home;
    fs::path database = home.path() / macPlace;

    // One conversation created at 23:30 UTC: the 15th in Paris, the 14th in New York.
    void writeConversation(long long input, bool wal = false) {
        fs::remove(database);
        testing::writeCursorDatabase(database, {{"composerData:" + conversation, cursorCreatedAt(1741995000000)},
                                                {"bubbleId:" + conversation + ":1", cursorTokenCount(input, 10)}});
        if (wal) execute(database, "PRAGMA journal_mode=WAL");
    }
};

TEST_F(CursorReaderTest, BooksEachConversationOnItsCreationDayEvenUnderAPathWithUriCharacters) {
    const fs::path weirdHome = home.path() / "we?ird #home %20";
    const auto ms = [](Date date) { return static_cast<long long>(date.unixSeconds() * 1000.0); };
    const long long lateOn14th = ms(testing::localDate(2025, 3, 14, 23, 59));
    const long long on15th = ms(testing::localDate(2025, 3, 15, 9));
    const std::string a(36, 'a'), b(36, 'b'), c(36, 'c'), d(36, 'd'), e(36, 'e'), f(36, 'f');
    testing::writeCursorDatabase(weirdHome / macPlace, {
        // a: messages on either side of midnight all go to its creation day; b: input only is no request.
        {"composerData:" + a, cursorCreatedAt(lateOn14th)}, {"bubbleId:" + a + ":1", cursorTokenCount(1000, 1000)},
        {"bubbleId:" + a + ":2", cursorTokenCount(500, 0)}, {"bubbleId:" + a + ":3", cursorTokenCount(0, 7)},
        {"composerData:" + b, cursorCreatedAt(lateOn14th)}, {"bubbleId:" + b + ":1", cursorTokenCount(300, 0)},
        // c: no tokens; d: no creation row; e: created at 0; f: a message without counts.
        {"composerData:" + c, cursorCreatedAt(lateOn14th)}, {"bubbleId:" + c + ":1", cursorTokenCount(0, 0)},
        {"bubbleId:" + d + ":1", cursorTokenCount(50, 50)},
        {"composerData:" + e, cursorCreatedAt(0)}, {"bubbleId:" + e + ":1", cursorTokenCount(50, 50)},
        {"composerData:" + f, cursorCreatedAt(on15th)}, {"bubbleId:" + f + ":1", cursorTokenCount(40, 4)},
        {"bubbleId:" + f + ":2", R"({"_v":2,"text":"no counts"})"}, {"unrelated:" + f, cursorTokenCount(9999, 9999)},
    });
    // Water per conversation: round((150 + 1007) × 0.1125) = 130, round(30 × 0.1125) = 3.
    const DayMap expected{{"2025-03-14", {{a, b}, 2, 1800, 1007, {}, 0, 133, {}}},
                          {"2025-03-15", {{f}, 1, 40, 4, {}, 0, 1, {}}}};
    EXPECT_EQ(readCursorUsage(weirdHome, LocalCalendar{}), expected);
    // Two leading slashes name the same folder; in a URI they would start a host name.
    EXPECT_EQ(readCursorUsage("/" + weirdHome.string(), LocalCalendar{}), expected);
}

TEST_F(CursorReaderTest, FindsTheMacPlaceFirstThenTheLinuxOneAndABrokenDatabaseGivesNoDays) {
    const fs::path linuxPlace = ".config/Cursor/User/globalStorage/state.vscdb";
    EXPECT_FALSE(readCursorUsage(home.path(), LocalCalendar{}));
    testing::writeCursorDatabase(home.path() / linuxPlace, {});
    EXPECT_EQ(cursorDatabasePath(home.path()), home.path() / linuxPlace);
    EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}), DayMap{});
    testing::writeCursorDatabase(database, {});
    EXPECT_EQ(cursorDatabasePath(home.path()), database);

    const std::string garbage(4096, '\x5a');
    for (const std::string& contents : {std::string(), std::string("SQLite format 3? no, text\n"), garbage,
                                        std::string("SQLite format 3\0", 16) + garbage}) {
        home.write(macPlace, contents);
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}), DayMap{}) << contents.size();
    }
    // No Cursor table; one message whose value is not JSON fails the grouped query as a whole.
    execute(home.path() / "other.db", "CREATE TABLE t (x)");
    EXPECT_EQ(readCursorDatabase(home.path() / "other.db", LocalCalendar{}), DayMap{});
    testing::writeCursorDatabase(home.path() / "bad.db",
                                 {{"composerData:" + conversation, cursorCreatedAt(1741950000000)},
                                  {"bubbleId:" + conversation + ":1", cursorTokenCount(10, 10)},
                                  {"bubbleId:" + conversation + ":2", "not json"}});
    EXPECT_EQ(readCursorDatabase(home.path() / "bad.db", LocalCalendar{}), DayMap{});
    fs::remove(database);
    fs::remove(home.path() / linuxPlace);
    fs::create_directories(database);
    EXPECT_FALSE(readCursorUsage(home.path(), LocalCalendar{}));
}

// Cursor's folder is never written to: no journal, log or shared-memory file, no changed
// time, in WAL or rollback mode, whether we may write there or not (the superuser always may).
TEST_F(CursorReaderTest, ReadsWalAndRollbackDatabasesLeavingTheirFolderAsItWasEvenWhereNobodyMayWrite) {
    for (const bool wal : {true, false}) {
        for (const bool writable : {true, false}) {
            SCOPED_TRACE(std::string(wal ? "WAL" : "rollback") + (writable ? ", writable" : ", read-only"));
            writeConversation(10, wal);
            if (!writable) fs::permissions(database.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
            const auto before = testing::folderSnapshot(database.parent_path());
            LockWaitBudget budget;
            EXPECT_EQ(inputTokens(readCursorDatabase(database, LocalCalendar{}, budget)), 10);
            EXPECT_EQ(testing::folderSnapshot(database.parent_path()), before);
            fs::permissions(database.parent_path(), fs::perms::owner_all);
        }
    }
}

// While the editor has a WAL database open, what it wrote lies in the log: it is read too.
TEST_F(CursorReaderTest, ReadsWhatTheRunningEditorHoldsInItsWriteAheadLog) {
    writeConversation(10, true);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t editor = ::fork();
    if (editor == 0) {
        sqlite3* connection = nullptr;
        sqlite3_open(database.c_str(), &connection);
        sqlite3_exec(connection,
                     "PRAGMA wal_autocheckpoint=0; UPDATE cursorDiskKV SET value="
                     "json_set(value, '$.tokenCount.inputTokens', 777) WHERE key LIKE 'bubbleId:%'",
                     nullptr, nullptr, nullptr);
        (void)!::write(ready[1], "r", 1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    LockWaitBudget budget;
    EXPECT_EQ(inputTokens(readCursorDatabase(database, LocalCalendar{}, budget)), 777);
    ::kill(editor, SIGKILL);
    ::waitpid(editor, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
}

// A lock held by the editor is waited for once per import: both queries draw on the
// same budget, and a lock let go within it is read through.
TEST_F(CursorReaderTest, BothQueriesShareOneLockWait) {
    writeConversation(10);
    sqlite3* editor = nullptr;
    sqlite3_open(database.c_str(), &editor);
    ASSERT_EQ(sqlite3_exec(editor, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    std::chrono::milliseconds slept{0};
    LockWaitBudget heldThroughout(LockWaitBudget::cursorTotal, [&](std::chrono::milliseconds span) { slept += span; });
    EXPECT_EQ(inputTokens(readCursorDatabase(database, LocalCalendar{}, heldThroughout)), 0);
    EXPECT_EQ(slept, 4000ms);
    EXPECT_EQ(heldThroughout.remaining(), 0ms);

    slept = 0ms;
    LockWaitBudget letGo(LockWaitBudget::cursorTotal, [&](std::chrono::milliseconds span) {
        slept += span;
        if (slept >= 2000ms && !sqlite3_get_autocommit(editor))
            sqlite3_exec(editor, "COMMIT", nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(inputTokens(readCursorDatabase(database, LocalCalendar{}, letGo)), 10);
    EXPECT_GE(slept, 2000ms);
    EXPECT_LT(slept, 2100ms);
    sqlite3_close(editor);
}

TEST_F(CursorReaderTest, AnUnchangedDatabaseIsNotOpenedAndAnyStampOrZoneChangeReadsItAgain) {
    const fs::path log = database.string() + "-wal";  // left alone by SQLite: the database is not in WAL mode
    const auto appendKeepingTime = [](const fs::path& path, const std::string& bytes, timespec time) {
        std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
        setModified(path, time);
    };
    const std::function<void()> changes[] = {
        [&] { appendKeepingTime(database, std::string(4096, '\0'), modified(log)); },
        [&] { setModified(database, {1700000000, 1}); },
        [&] { appendKeepingTime(log, "x", modified(log)); },
        [&] { setModified(log, {1700000000, 1}); },
        [&] { fs::remove(log); },
        [&] { zone.emplace("America/New_York"); },
    };
    std::optional<CursorDayCache> cache;
    for (size_t change = 0; change < std::size(changes); ++change) {
        SCOPED_TRACE(::testing::Message() << "change " << change);
        zone.emplace("Europe/Paris");
        writeConversation(111);
        home.write(macPlace.string() + "-wal", "log");
        setModified(log, modified(database));
        cache.reset();
        ASSERT_EQ(inputTokens(readCursorUsage(home.path(), LocalCalendar{}, cache)), 111);

        // The count's digits rewritten in place: same size, time put back.
        const timespec time = modified(database);
        std::fstream file(database, std::ios::in | std::ios::out | std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        file.seekp(static_cast<std::streamoff>(bytes.find("\"inputTokens\":111,")));
        file << "\"inputTokens\":222,";
        file.close();
        setModified(database, time);
        EXPECT_EQ(inputTokens(readCursorUsage(home.path(), LocalCalendar{}, cache)), 111) << "taken from the cache";
        const CursorStamps kept = cache.value().stamps;

        changes[change]();
        const auto fullRead = readCursorDatabase(database, LocalCalendar{});
        EXPECT_EQ(inputTokens(fullRead), 222);
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}, cache), fullRead);
        EXPECT_NE(cache.value().stamps, kept);
        EXPECT_EQ(cache->days, fullRead);
    }
    EXPECT_EQ(cache->days.begin()->first, "2025-03-14") << "the new zone moved the conversation a day back";

    // The cache file gives back what was saved, with or without a log's stamp, and forgets on request.
    const CursorDayCacheFile file(home.path() / "support");
    fs::create_directories(home.path() / "support");
    for (int round = 0; round < 2; ++round, cache->stamps.writeAheadLog.reset()) {
        ASSERT_TRUE(file.save(cache));
        EXPECT_EQ(file.load(), cache);
    }
    ASSERT_TRUE(file.save(std::nullopt));
    EXPECT_FALSE(file.load());
    home.write("support/cursor-days.json", R"({"version":5,"files":{}})");
    EXPECT_FALSE(file.load());
}

}  // namespace
}  // namespace tallowen
