#include "import/CursorDayCacheFile.hpp"
#include "readers/CursorDayCache.hpp"
#include "readers/CursorReader.hpp"
#include "support/CursorDatabase.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/stat.h>

namespace tallowen {
namespace {

const std::filesystem::path databasePlace = "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
const std::string conversation(36, 'c');

void setModificationTime(const std::filesystem::path& path, const struct timespec& time) {
    const struct timespec times[2] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

struct timespec modificationTime(const std::filesystem::path& path) {
    struct stat status {};
    ::stat(path.c_str(), &status);
    return status.st_mtim;
}

void append(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

class CursorDayCacheTest : public ::testing::Test {
protected:
    std::unique_ptr<testing::ScopedTimeZone> zone = std::make_unique<testing::ScopedTimeZone>("Europe/Paris");
    testing::TempDir home;
    std::filesystem::path database = home.path() / databasePlace;
    std::filesystem::path writeAheadLog = database.string() + "-wal";
    std::optional<CursorDayCache> cache;

    // Created at 23:30 UTC: the 15th in Paris, the 14th in New York.
    void writeDatabase(int inputTokens) {
        std::filesystem::remove(database);
        testing::writeCursorDatabase(
            database, {{"composerData:" + conversation, testing::cursorCreatedAt(1741995000000)},
                       {"bubbleId:" + conversation + ":1", testing::cursorTokenCount(inputTokens, 10)}});
    }

    // Rewrites the count's digits in the file itself: the size stays, and the time is put back.
    void changeTokensKeepingStamps(int from, int to) {
        const auto time = modificationTime(database);
        std::fstream file(database, std::ios::in | std::ios::out | std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        const std::string before = "\"inputTokens\":" + std::to_string(from) + ",";
        const size_t at = bytes.find(before);
        ASSERT_NE(at, std::string::npos);
        const std::string after = "\"inputTokens\":" + std::to_string(to) + ",";
        ASSERT_EQ(after.size(), before.size());
        file.seekp(static_cast<std::streamoff>(at));
        file.write(after.data(), static_cast<std::streamsize>(after.size()));
        file.close();
        setModificationTime(database, time);
    }

    int64_t inputTokensRead() {
        const auto days = readCursorUsage(home.path(), LocalCalendar{}, cache);
        int64_t tokens = 0;
        for (const auto& [key, day] : days.value()) tokens += day.inputTokens;
        return tokens;
    }
};

TEST_F(CursorDayCacheTest, AnUnchangedDatabaseIsNotOpenedAndAnyStampOrZoneChangeReadsItAgain) {
    // SQLite leaves a "-wal" file alone unless the database says it uses one.
    const std::function<void()> changes[] = {
        [&] {
            append(database, std::string(4096, '\0'));
            setModificationTime(database, modificationTime(writeAheadLog));
        },
        [&] { setModificationTime(database, {1700000000, 1}); },
        [&] {
            const auto time = modificationTime(writeAheadLog);
            append(writeAheadLog, "x");
            setModificationTime(writeAheadLog, time);
        },
        [&] { setModificationTime(writeAheadLog, {1700000000, 1}); },
        [&] { std::filesystem::remove(writeAheadLog); },
        [&] { zone = std::make_unique<testing::ScopedTimeZone>("America/New_York"); },
    };
    for (size_t change = 0; change < std::size(changes); ++change) {
        SCOPED_TRACE(::testing::Message() << "change " << change);
        zone = std::make_unique<testing::ScopedTimeZone>("Europe/Paris");
        writeDatabase(111);
        home.write(databasePlace.string() + "-wal", "log");
        setModificationTime(writeAheadLog, modificationTime(database));
        cache.reset();
        ASSERT_EQ(inputTokensRead(), 111);
        ASSERT_TRUE(cache);

        changeTokensKeepingStamps(111, 222);
        EXPECT_EQ(inputTokensRead(), 111) << "taken from the cache";
        const CursorDayCache kept = *cache;

        changes[change]();
        const auto fullRead = readCursorDatabase(database, LocalCalendar{});
        EXPECT_EQ(readCursorUsage(home.path(), LocalCalendar{}, cache), fullRead);
        EXPECT_EQ(fullRead->begin()->second.inputTokens, 222);
        EXPECT_NE(cache->stamps, kept.stamps);
        EXPECT_EQ(cache->days, *fullRead);
    }
    // The zone's change moved the conversation to the day before.
    EXPECT_EQ(cache->days.begin()->first, "2025-03-14");
}

TEST_F(CursorDayCacheTest, TheCacheFileGivesBackWhatWasSavedAndForgetsOnRequest) {
    writeDatabase(5);
    home.write(databasePlace.string() + "-wal", "log");
    inputTokensRead();
    ASSERT_TRUE(cache && cache->stamps.writeAheadLog);
    const CursorDayCacheFile file(home.path() / "support");
    std::filesystem::create_directories(home.path() / "support");
    ASSERT_TRUE(file.save(cache));
    EXPECT_EQ(file.load(), cache);

    cache->stamps.writeAheadLog.reset();
    ASSERT_TRUE(file.save(cache));
    EXPECT_EQ(file.load(), cache);

    ASSERT_TRUE(file.save(std::nullopt));
    EXPECT_FALSE(file.load());
    home.write("support/cursor-days.json", R"({"version":5,"files":{}})");
    EXPECT_FALSE(file.load());
}

}  // namespace
}  // namespace tallowen
