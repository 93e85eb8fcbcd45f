#include "import/CursorDayCacheFile.hpp"
#include "readers/CursorConnection.hpp"
#include "readers/CursorDayCache.hpp"
#include "readers/CursorFastPath.hpp"
#include "support/CursorDatabase.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fcntl.h>
#include <fstream>
#include <functional>
#include <random>
#include <sys/stat.h>

namespace tallowen {
namespace {

using namespace std::chrono_literals;
using testing::cursorCreatedAt;
using testing::cursorTokenCount;
namespace fs = std::filesystem;

const fs::path macPlace = "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
const std::string conversation(36, 'c');

void setModified(const fs::path& path, timespec time) {
    const timespec times[2] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

// A connection to `database` that has run `sql`, as the editor's would be.
sqlite3* opened(const fs::path& database, const char* sql) {
    sqlite3* connection = nullptr;
    sqlite3_open(database.c_str(), &connection);
    EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    return connection;
}

class CursorReaderTest : public ::testing::Test {
protected:
    std::optional<testing::ScopedTimeZone> zone{std::in_place, "Europe/Paris"};
    testing::TempDir home;
    fs::path database = home.path() / macPlace;

    // One conversation created at 23:30 UTC: the 15th in Paris, the 14th in New York.
    void writeConversation(long long input) {
        fs::remove(database);
        testing::writeCursorDatabase(database, {{"composerData:" + conversation, cursorCreatedAt(1741995000000)},
                                                {"bubbleId:" + conversation + ":1", cursorTokenCount(input, 10)}});
    }
};

TEST_F(CursorReaderTest, BooksEachConversationOnItsCreationDayEvenUnderAPathWithUriCharacters) {
    const fs::path weirdHome = home.path() / "we?ird #home %20";
    const long long lateOn14th = 1741993140000, on15th = 1742025600000;  // 23:59 and 09:00 in Paris
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
    testing::writeCursorDatabase(database, {});
    EXPECT_EQ(cursorDatabasePath(home.path()), database);

    // An empty file is a database without Cursor's table; then no database, and a corrupt one.
    const std::string garbage(4096, '\x5a');
    for (const std::string& contents : {std::string(), garbage, std::string("SQLite format 3\0", 16) + garbage}) {
        home.write(macPlace, contents);
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}), DayMap{}) << contents.size();
    }
    // One message whose value is not JSON fails the grouped query as a whole.
    testing::writeCursorDatabase(home.path() / "bad.db",
                                 {{"composerData:" + conversation, cursorCreatedAt(1741950000000)},
                                  {"bubbleId:" + conversation + ":1", cursorTokenCount(10, 10)},
                                  {"bubbleId:" + conversation + ":2", "not json"}});
    EXPECT_EQ(readCursorDatabase(home.path() / "bad.db", LocalCalendar{}), DayMap{});
    // A folder in the macOS place is passed over.
    fs::remove(database);
    fs::create_directories(database);
    EXPECT_EQ(cursorDatabasePath(home.path()), home.path() / linuxPlace);
}

// While the editor has a WAL database open, what it wrote lies in the log: it is read too.
TEST_F(CursorReaderTest, ReadsWhatTheRunningEditorHoldsInItsWriteAheadLog) {
    writeConversation(10);
    sqlite3* editor = opened(database, "PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0; "
                                       "UPDATE cursorDiskKV SET value=json_set(value, '$.tokenCount.inputTokens', 777) "
                                       "WHERE key LIKE 'bubbleId:%'");
    EXPECT_EQ(readCursorDatabase(database, LocalCalendar{}).value().at("2025-03-15").inputTokens, 777);
    sqlite3_close(editor);
}

// A lock the editor holds throughout is waited for once per import: both queries draw on one budget.
TEST_F(CursorReaderTest, BothQueriesShareOneLockWait) {
    writeConversation(10);
    sqlite3* editor = opened(database, "BEGIN EXCLUSIVE");
    std::chrono::milliseconds slept{0};
    LockWaitBudget budget(LockWaitBudget::cursorTotal, [&](std::chrono::milliseconds span) { slept += span; });
    EXPECT_EQ(readCursorDatabase(database, LocalCalendar{}, budget), DayMap{});
    EXPECT_EQ(slept, 4000ms);
    sqlite3_close(editor);
}

TEST_F(CursorReaderTest, AnUnchangedDatabaseIsNotOpenedAndAnyStampOrZoneChangeReadsItAgain) {
    const fs::path log = database.string() + "-wal";  // left alone by SQLite: the database is not in WAL mode
    const timespec then{1741950000, 5};
    const auto appendKeepingTime = [&](const fs::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
        setModified(path, then);
    };
    const std::function<void()> changes[] = {
        [&] { appendKeepingTime(database, std::string(4096, '\0')); },
        [&] { setModified(database, {1700000000, 1}); },
        [&] { appendKeepingTime(log, "x"); },
        [&] { setModified(log, {1700000000, 1}); },
        [&] { fs::remove(log); },
        [&] { zone.emplace("America/New_York"); },
    };
    const DayMap stale{{"2000-01-01", {}}};
    std::optional<CursorDayCache> cache;
    for (size_t change = 0; change < std::size(changes); ++change) {
        SCOPED_TRACE(::testing::Message() << "change " << change);
        zone.emplace("Europe/Paris");
        writeConversation(111);
        home.write(macPlace.string() + "-wal", "log");
        setModified(database, then);
        setModified(log, then);
        // Days cached under the stamps as they stand are given back as they are.
        cache = CursorDayCache{currentCursorStamps(database, LocalCalendar{}).value(), stale};
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}, cache), stale);

        changes[change]();
        const auto fullRead = readCursorDatabase(database, LocalCalendar{});
        ASSERT_EQ(fullRead.value().size(), 1u);
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}, cache), fullRead);
        EXPECT_EQ(cache, (CursorDayCache{currentCursorStamps(database, LocalCalendar{}).value(), fullRead.value()}));
    }
    EXPECT_EQ(cache->days.begin()->first, "2025-03-14") << "the new zone moved the conversation a day back";

    // The cache file gives back what was saved, with or without a log's stamp, and forgets on request.
    const CursorDayCacheFile file(home.path());
    for (int round = 0; round < 2; ++round, cache->stamps.writeAheadLog.reset()) {
        ASSERT_TRUE(file.save(cache));
        EXPECT_EQ(file.load(), cache);
    }
    ASSERT_TRUE(file.save(std::nullopt));
    EXPECT_FALSE(file.load());
    home.write("cursor-days.json", R"({"version":5,"files":{}})");
    EXPECT_FALSE(file.load());
}

// Bytes as an SQL text value, whatever they hold (NUL, invalid UTF-8).
std::string text(std::string_view bytes) {
    std::string hex;
    for (const unsigned char byte : bytes) hex += "0123456789abcdef"[byte >> 4], hex += "0123456789abcdef"[byte & 15];
    return "CAST(x'" + hex + "' AS TEXT)";
}

// Values on which simdjson and json_extract could part: every one must come out of
// the fast path as the reference queries read it, or be sent back to them.
const std::vector<std::string> trickyNumbers = {
    "0", "-0", "1", "-5", "0.5", "2.5", "12.0", "1e3", "\"12\"", "\"abc\"", "true", "null", "{}", "[1]",
    "9223372036854775807", "-9223372036854775808", "9223372036854775808", "18446744073709551616", "1e400",
    "4611686018427387904"};
const std::vector<std::string> trickyTexts = {
    "", "{", "not json", "[]", "5", R"({"a":1} x)", R"({'a':1})", "{\"a\":\"\x01\"}", "{\"a\":\"\xff\"}",
    R"({"tokenCount":5})", R"({"tokenCount":[1,2]})", R"({"tokenCount":null})",
    R"({"tokenCount":{"inputTokens":1,"inputTokens":2,"outputTokens":3}})",
    R"({"token\u0043ount":{"inputTokens":9,"outputTokens":9}})",
    R"({"tokenCount":{"input\u0054okens":9,"outputTokens":1},"text":"\u00e9"})",
    R"({"createdAt":1741950000000,"createdAt":5})", R"({"text":"a \\u b","tokenCount":{"outputTokens":2}})",
    std::string(300, '[') + std::string(300, ']'), std::string("{\"createdAt\":1741950000000}\0tail", 32)};

// The SQL of a Cursor table of a dozen conversations, a quarter of whose values are tricky.
std::string generatedCursorTable(unsigned seed) {
    std::mt19937 random(seed);
    const auto number = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    const auto chance = [&](int oneIn) { return number(1, oneIn) == 1; };
    const auto pick = [&](const std::vector<std::string>& list) {
        return list[static_cast<size_t>(number(0, int(list.size()) - 1))];
    };
    const auto tricky = [&](const std::string& member) -> std::string {
        switch (number(0, 5)) {
            case 0: return "NULL";
            case 1: return "5";
            case 2: return R"(CAST('{"createdAt":1741950000000,"tokenCount":{"inputTokens":3}}' AS BLOB))";
            case 3: return text(pick(trickyTexts));
            default:
                if (member == "createdAt") return text(R"({"createdAt":)" + pick(trickyNumbers) + "}");
                return text(R"({"tokenCount":{"inputTokens":)" + pick(trickyNumbers) + R"(,"outputTokens":)" +
                            (chance(2) ? pick(trickyNumbers) : "3") + "}}");
        }
    };
    std::string sql = "CREATE TABLE cursorDiskKV (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB); BEGIN;";
    const auto insert = [&](const std::string& key, const std::string& value) {
        sql += "INSERT INTO cursorDiskKV VALUES (" + key + ", " + value + ");";
    };
    for (int index = 0; index < 12; ++index) {
        // The last identifier starts with é: substr counts characters, not bytes.
        const std::string id = index == 11 ? "\xc3\xa9" + std::string(34, 'l') : std::string(36, char('a' + index));
        const long long createdAt = 1741950000000LL + number(-3, 3) * 43200000LL;
        insert(text("composerData:" + id),
               chance(25) ? tricky("createdAt") : text(R"({"createdAt":)" + std::to_string(createdAt) + "}"));
        for (int message = number(0, 6); message > 0; --message)
            insert(text("bubbleId:" + id + ":" + std::to_string(message)),
                   chance(25) ? tricky("tokenCount")
                              : text(R"({"text":"x\n\"y\"","tokenCount":{"inputTokens":)" +
                                     std::to_string(number(0, 5000)) + R"(,"outputTokens":)" +
                                     std::to_string(number(-2, 900)) + "}}"));
    }
    // Keys of other shapes: in capitals, too short, stored as a blob.
    const std::string tokens = text(R"({"tokenCount":{"inputTokens":7,"outputTokens":1}})");
    if (chance(4)) insert(text("BUBBLEID:" + std::string(36, 'b') + ":x"), tokens);
    if (chance(4)) insert(text("bubbleId:"), tokens);
    if (chance(6)) insert("CAST('bubbleId:" + std::string(36, 'c') + ":b' AS BLOB)", tokens);
    if (chance(6)) insert(text("composerData:" + std::string(36, 'd')), text(R"({"createdAt":1}")"));
    return sql + "COMMIT;";
}

TEST(CursorFastPathTest, GivesTheReferenceRowsOrLeavesThemToTheReference) {
    int settled = 0;
    const unsigned databases = 400;
    for (unsigned seed = 1; seed <= databases; ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        sqlite3* database = opened(":memory:", generatedCursorTable(seed).c_str());
        const CursorRows reference = readCursorRowsByReference(database);
        const auto fast = readCursorRowsFast(database);
        sqlite3_close(database);
        settled += fast.has_value();
        EXPECT_EQ(fast.value_or(reference), reference);
    }
    // Most databases hold only values the fast path settles, with json_extract's help on a few rows.
    EXPECT_GT(settled, int(databases / 2));
}

}  // namespace
}  // namespace tallowen
