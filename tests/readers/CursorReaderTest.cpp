#include "readers/CursorReader.hpp"
#include "support/CursorDatabase.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::cursorCreatedAt;
using testing::cursorTokenCount;
using testing::localDate;
using testing::TempDir;

const std::filesystem::path macPlace = "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
const std::filesystem::path linuxPlace = ".config/Cursor/User/globalStorage/state.vscdb";

// Conversation identifiers are 36 characters long, like Cursor's.
std::string conversation(char letter) { return std::string(36, letter); }

long long millisecondsAt(Date date) { return static_cast<long long>(date.unixSeconds() * 1000.0); }

TEST(CursorReaderTest, BooksEachConversationOnItsCreationDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    TempDir home;
    const std::string a = conversation('a'), b = conversation('b'), c = conversation('c'), d = conversation('d'),
                      e = conversation('e'), f = conversation('f');
    const long long lateOn14th = millisecondsAt(localDate(2025, 3, 14, 23, 59));
    const long long on15th = millisecondsAt(localDate(2025, 3, 15, 9));
    testing::writeCursorDatabase(home.path() / macPlace, {
        // a: created at 23:59, messages on either side of midnight: all on the 14th.
        {"composerData:" + a, cursorCreatedAt(lateOn14th)},
        {"bubbleId:" + a + ":1", cursorTokenCount(1000, 1000)},
        {"bubbleId:" + a + ":2", cursorTokenCount(500, 0)},
        {"bubbleId:" + a + ":3", cursorTokenCount(0, 7)},
        // b: input only: a session, no request.
        {"composerData:" + b, cursorCreatedAt(lateOn14th)},
        {"bubbleId:" + b + ":1", cursorTokenCount(300, 0)},
        // c: no tokens at all; d: no creation row; e: created at 0.
        {"composerData:" + c, cursorCreatedAt(lateOn14th)},
        {"bubbleId:" + c + ":1", cursorTokenCount(0, 0)},
        {"bubbleId:" + d + ":1", cursorTokenCount(50, 50)},
        {"composerData:" + e, cursorCreatedAt(0)},
        {"bubbleId:" + e + ":1", cursorTokenCount(50, 50)},
        // f: another day; a message without a token count counts as zero.
        {"composerData:" + f, cursorCreatedAt(on15th)},
        {"bubbleId:" + f + ":1", cursorTokenCount(40, 4)},
        {"bubbleId:" + f + ":2", R"({"_v":2,"text":"no counts"})"},
        {"unrelated:" + f, cursorTokenCount(99999, 99999)},
    });

    const auto days = readCursorUsage(home.path(), LocalCalendar{});
    ASSERT_TRUE(days);
    ASSERT_EQ(days->size(), 2u);
    const DayUsage& day14 = days->at("2025-03-14");
    EXPECT_EQ(day14.sessions, (std::set<std::string>{a, b}));
    EXPECT_EQ(day14.requests, 2);
    EXPECT_EQ(day14.inputTokens, 1800);
    EXPECT_EQ(day14.outputTokens, 1007);
    // Water per conversation: round((150 + 1007) × 0.1125) = 130, round(30 × 0.1125) = 3.
    EXPECT_EQ(day14.waterMilliliters, 133);
    EXPECT_EQ(day14.costCents, 0);
    EXPECT_TRUE(day14.episodeHours.empty());
    EXPECT_FALSE(day14.quota);
    const DayUsage& day15 = days->at("2025-03-15");
    EXPECT_EQ(day15.sessions, (std::set<std::string>{f}));
    EXPECT_EQ(day15.requests, 1);
    EXPECT_EQ(day15.inputTokens, 40);
    EXPECT_EQ(day15.outputTokens, 4);
    EXPECT_EQ(day15.waterMilliliters, 1);
}

TEST(CursorReaderTest, FindsTheDatabaseInTheMacPlaceFirstThenTheLinuxOne) {
    TempDir home;
    EXPECT_FALSE(cursorDatabasePath(home.path()));
    EXPECT_FALSE(readCursorUsage(home.path(), LocalCalendar{}));

    testing::writeCursorDatabase(home.path() / linuxPlace, {});
    EXPECT_EQ(cursorDatabasePath(home.path()), home.path() / linuxPlace);
    const auto empty = readCursorUsage(home.path(), LocalCalendar{});
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->empty());

    testing::writeCursorDatabase(home.path() / macPlace, {});
    EXPECT_EQ(cursorDatabasePath(home.path()), home.path() / macPlace);
}

TEST(CursorReaderTest, ABrokenDatabaseGivesNoDaysAndNeverFails) {
    TempDir home;
    const std::string garbage(4096, '\x5a');
    const struct {
        const char* name;
        std::string contents;
    } cases[] = {
        {"empty file", ""},
        {"text file", "SQLite format 3? no, just text\n"},
        {"random bytes", garbage},
        {"truncated header", std::string("SQLite format 3\0", 16) + garbage},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        home.write(macPlace, c.contents);
        const auto days = readCursorUsage(home.path(), LocalCalendar{});
        ASSERT_TRUE(days);
        EXPECT_TRUE(days->empty());
    }

    // A real database without Cursor's table, and a folder where the file should be.
    std::filesystem::remove(home.path() / macPlace);
    testing::writeCursorDatabase(home.path() / "other.db", {});
    const auto noTable = readCursorDatabase(home.path() / "other.db", LocalCalendar{});
    ASSERT_TRUE(noTable);
    EXPECT_TRUE(noTable->empty());
    // One message whose value is not JSON makes the grouped query fail as a whole.
    const std::string a = conversation('a');
    testing::writeCursorDatabase(home.path() / "bad-value.db", {{"composerData:" + a, cursorCreatedAt(1741950000000)},
                                                                {"bubbleId:" + a + ":1", cursorTokenCount(10, 10)},
                                                                {"bubbleId:" + a + ":2", "not json"}});
    const auto badValue = readCursorDatabase(home.path() / "bad-value.db", LocalCalendar{});
    ASSERT_TRUE(badValue);
    EXPECT_TRUE(badValue->empty());
    std::filesystem::create_directories(home.path() / macPlace);
    EXPECT_FALSE(readCursorUsage(home.path(), LocalCalendar{}));
}

TEST(CursorReaderTest, OpensAPathWithUriCharacters) {
    testing::ScopedTimeZone zone("Europe/Paris");
    TempDir folder;
    const auto home = folder.path() / "we?ird #home %20";
    const std::string a = conversation('a');
    testing::writeCursorDatabase(home / macPlace, {{"composerData:" + a, cursorCreatedAt(millisecondsAt(
                                                                             localDate(2025, 3, 14, 12)))},
                                                   {"bubbleId:" + a + ":1", cursorTokenCount(10, 10)}});
    const auto days = readCursorUsage(home, LocalCalendar{});
    ASSERT_TRUE(days);
    EXPECT_EQ(days->at("2025-03-14").inputTokens, 10);

    // Two leading slashes name the same folder; in a URI they would start a host name.
    const auto doubled = readCursorUsage("/" + home.string(), LocalCalendar{});
    ASSERT_TRUE(doubled);
    EXPECT_EQ(*doubled, *days);
}

}  // namespace
}  // namespace tallowen
