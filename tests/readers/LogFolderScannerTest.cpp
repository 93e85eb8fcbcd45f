#include "import/ImportStateFile.hpp"
#include "readers/LineSplitter.hpp"
#include "readers/LogFolderScanner.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::TempDir;

// A log line for the stand-in reader: "<unix seconds> <input> <output>", or
// "quota <unix seconds> <primary percent>".
std::string eventLine(Date date, int input, int output) {
    return std::to_string(static_cast<long long>(date.unixSeconds())) + " " + std::to_string(input) + " " +
           std::to_string(output) + "\n";
}

std::string quotaLine(Date at, double percent) {
    return "quota " + std::to_string(static_cast<long long>(at.unixSeconds())) + " " + std::to_string(percent) + "\n";
}

// Stands in for a tool's reader and counts the files it is handed.
struct CountingReader {
    std::atomic<int> filesRead = 0;

    static FileReading readBytes(std::string_view bytes) {
        FileReading reading;
        forEachLine(bytes, [&](std::string_view line) {
            const std::string text(line);
            long long seconds = 0;
            int input = 0;
            int output = 0;
            double percent = 0;
            if (std::sscanf(text.c_str(), "quota %lld %lf", &seconds, &percent) == 2) {
                QuotaSnapshot snapshot;
                snapshot.at = Date::fromUnixSeconds(double(seconds));
                snapshot.primaryPercent = percent;
                keepLaterQuota(reading.quota, snapshot);
            } else if (std::sscanf(text.c_str(), "%lld %d %d", &seconds, &input, &output) == 3) {
                reading.events.push_back(UsageEvent{Date::fromUnixSeconds(double(seconds)), input, output, 1, 1});
            }
        });
        return reading;
    }

    // Reads each file whole, first calling `beforeReading` with its runs.
    LogReaderMaker maker(std::function<void()> beforeReading = {}) {
        return [this, beforeReading] {
            return [this, beforeReading](LineRuns& lines) {
                ++filesRead;
                if (beforeReading) beforeReading();
                std::string bytes;
                lines.forEachRun([&](std::string_view run) { bytes += run; });
                return readBytes(bytes);
            };
        };
    }
};

// Sets a file's modification time to an exact instant, nanoseconds included.
void setModificationTime(const std::filesystem::path& path, time_t seconds, long nanoseconds) {
    const struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

class LogFolderScannerTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    TempDir home;
    CountingReader counting;
    FileEntries files;

    std::filesystem::path folder() const { return home.path() / "projects"; }
    FolderScan scanFolder() { return scan(folder(), files, counting.maker(), calendar); }
};

TEST_F(LogFolderScannerTest, ReadsVisibleJsonlFilesAtAnyDepthOnly) {
    const Date morning = localDate(2025, 3, 14, 10);
    home.write("projects/a/s1.jsonl", eventLine(morning, 100, 10));
    home.write("projects/b/c/s6.jsonl", eventLine(morning.addingSeconds(60), 5, 1));
    home.write("projects/a/empty.jsonl", "");
    home.write("projects/a/two.parts.jsonl", eventLine(morning, 1, 1));
    // Passed over: hidden file, file in a hidden folder, other letter case, other extensions.
    home.write("projects/a/.s3.jsonl", eventLine(morning, 1000, 1000));
    home.write("projects/.hidden/s2.jsonl", eventLine(morning, 1000, 1000));
    home.write("projects/a/s4.JSONL", eventLine(morning, 1000, 1000));
    home.write("projects/a/s5.json", eventLine(morning, 1000, 1000));
    home.write("projects/a/s7.jsonl.bak", eventLine(morning, 1000, 1000));
    home.write("projects/a/jsonl", eventLine(morning, 1000, 1000));

    const FolderScan result = scanFolder();
    ASSERT_TRUE(result.days);
    EXPECT_EQ(result.counters.filesRead, 4);
    EXPECT_EQ(result.counters.filesReused, 0);
    EXPECT_EQ(counting.filesRead, 4);
    ASSERT_EQ(result.days->size(), 1u);
    const DayUsage& day = result.days->at("2025-03-14");
    EXPECT_EQ(day.sessions, (std::set<std::string>{"s1#0", "s6#0", "two.parts#0"}));
    EXPECT_EQ(day.requests, 3);
    EXPECT_EQ(day.inputTokens, 106);
    EXPECT_EQ(day.outputTokens, 12);
    EXPECT_EQ(day.episodeHours, (std::vector<int64_t>{10, 10, 10}));

    // Entries are keyed by absolute path; an empty file has an entry with no days.
    const std::string root = home.path().string() + "/projects/";
    ASSERT_EQ(files.size(), 4u);
    EXPECT_TRUE(files.count(root + "a/s1.jsonl"));
    EXPECT_TRUE(files.count(root + "b/c/s6.jsonl"));
    EXPECT_TRUE(files.at(root + "a/empty.jsonl").days.empty());
    EXPECT_EQ(files.at(root + "a/s1.jsonl").size, static_cast<int64_t>(eventLine(morning, 100, 10).size()));
}

TEST_F(LogFolderScannerTest, AMissingFolderYieldsNothingAndAnEmptyOneAnEmptyMap) {
    EXPECT_FALSE(scanFolder().days);
    std::filesystem::create_directories(folder());
    const FolderScan empty = scanFolder();
    ASSERT_TRUE(empty.days);
    EXPECT_TRUE(empty.days->empty());
}

TEST_F(LogFolderScannerTest, OnlyAChangeOfSizeOrTimeMakesAFileReadAgain) {
    const Date morning = localDate(2025, 3, 14, 10);
    const auto path = home.write("projects/s.jsonl", eventLine(morning, 100, 10));
    setModificationTime(path, 1741950000, 123456789);
    scanFolder();
    ASSERT_EQ(counting.filesRead, 1);

    // Same size, time put back: the stored days stand, even though the bytes changed.
    home.write("projects/s.jsonl", eventLine(morning, 900, 90));
    setModificationTime(path, 1741950000, 123456789);
    FolderScan result = scanFolder();
    EXPECT_EQ(counting.filesRead, 1);
    EXPECT_EQ(result.counters.filesReused, 1);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 100);

    // One microsecond later is a change (a date holds about a tenth of a microsecond).
    setModificationTime(path, 1741950000, 123457789);
    result = scanFolder();
    EXPECT_EQ(counting.filesRead, 2);
    EXPECT_EQ(result.counters.filesRead, 1);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 900);

    // So is a new size at the same time.
    home.write("projects/s.jsonl", eventLine(morning, 900, 90) + eventLine(morning.addingSeconds(60), 1, 1));
    setModificationTime(path, 1741950000, 123457789);
    result = scanFolder();
    EXPECT_EQ(counting.filesRead, 3);
    EXPECT_EQ(result.days->at("2025-03-14").requests, 2);
}

TEST_F(LogFolderScannerTest, AnUnreadableFileKeepsItsOldEntryAndIsReadOnceReadableAgain) {
    if (::geteuid() == 0) GTEST_SKIP() << "root reads every file";
    const Date morning = localDate(2025, 3, 14, 10);
    home.write("projects/ok.jsonl", eventLine(morning, 1, 1));
    const auto locked = home.write("projects/locked.jsonl", eventLine(morning, 100, 10));
    scanFolder();
    const FileEntry before = files.at(locked.string());

    home.write("projects/locked.jsonl", eventLine(morning, 200, 20) + eventLine(morning, 300, 30));
    std::filesystem::permissions(locked, std::filesystem::perms::none);
    FolderScan result = scanFolder();
    EXPECT_EQ(result.counters.filesUnreadable, 1);
    EXPECT_EQ(result.counters.filesReused, 1);
    EXPECT_EQ(files.at(locked.string()), before);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 1);

    std::filesystem::permissions(locked, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    result = scanFolder();
    EXPECT_EQ(result.counters.filesRead, 1);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 501);
}

TEST_F(LogFolderScannerTest, AFileGoneBeforeOrDuringTheScanKeepsItsEntryButNoLongerCounts) {
    const Date morning = localDate(2025, 3, 14, 10);
    home.write("projects/a.jsonl", eventLine(morning, 1, 1));
    const auto later = home.write("projects/b.jsonl", eventLine(morning, 100, 10));
    const auto gone = home.write("projects/c.jsonl", eventLine(morning, 7, 7));
    scanFolder();
    const FileEntry before = files.at(later.string());
    std::filesystem::remove(gone);

    // a and b change; b disappears while a, the larger, hence read first, is being read.
    home.write("projects/a.jsonl", eventLine(morning, 2, 2) + eventLine(morning, 3, 3) + eventLine(morning, 0, 0) +
                                       eventLine(morning, 0, 0));
    home.write("projects/b.jsonl", eventLine(morning, 200, 20) + eventLine(morning, 300, 30));
    const FolderScan result =
        scan(folder(), files, counting.maker([&] { std::filesystem::remove(later); }), calendar, {.workerThreads = 1});
    EXPECT_EQ(result.counters.filesRead, 1);
    EXPECT_EQ(result.counters.filesUnreadable, 1);
    EXPECT_EQ(result.counters.filesReused, 0);
    EXPECT_EQ(files.at(later.string()), before);
    EXPECT_TRUE(files.count(gone.string()));
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 5);
    EXPECT_EQ(result.days->at("2025-03-14").sessions, (std::set<std::string>{"a#0"}));
}

TEST_F(LogFolderScannerTest, AFileThatRunsOutOfMemoryKeepsItsOldEntryAndTheOthersAreRead) {
    const Date morning = localDate(2025, 3, 14, 10);
    home.write("projects/a.jsonl", eventLine(morning, 1, 1));
    const auto big = home.write("projects/b.jsonl", eventLine(morning, 100, 10));
    home.write("projects/c.jsonl", eventLine(morning, 1000, 1));
    scanFolder();
    const FileEntry before = files.at(big.string());

    home.write("projects/b.jsonl", eventLine(morning, 200, 20));
    home.write("projects/c.jsonl", eventLine(morning, 3000, 3));
    const LogReaderMaker failingOnB = [] {
        return [](LineRuns& lines) {
            std::string bytes;
            lines.forEachRun([&](std::string_view run) { bytes += run; });
            if (bytes.find(" 200 ") != std::string::npos) throw std::bad_alloc();
            return CountingReader::readBytes(bytes);
        };
    };
    const FolderScan result = scan(folder(), files, failingOnB, calendar);
    EXPECT_EQ(result.counters.filesRead, 1);
    EXPECT_EQ(result.counters.filesReused, 1);
    EXPECT_EQ(result.counters.filesUnreadable, 1);
    EXPECT_EQ(files.at(big.string()), before);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 3001);
}

TEST_F(LogFolderScannerTest, AFileShortenedWhileBeingReadIsDroppedForThisRunWithoutStopping) {
    const Date morning = localDate(2025, 3, 14, 10);
    const auto log = home.write("projects/a.jsonl", eventLine(morning, 1, 1));
    scanFolder();
    const FileEntry before = files.at(log.string());

    // Several pages of log; the writer cuts the file to nothing while it is being read.
    std::string grown;
    while (grown.size() < 5 * 4096) grown += eventLine(morning, 7, 7);
    home.write("projects/a.jsonl", grown);
    const FolderScan result =
        scan(folder(), files, counting.maker([&] { EXPECT_EQ(::truncate(log.c_str(), 0), 0); }), calendar);
    EXPECT_EQ(result.counters.filesRead, 0);
    EXPECT_EQ(result.counters.filesUnreadable, 1);
    EXPECT_EQ(files.at(log.string()), before);

    // Next run: the shortened file is read as it now stands.
    EXPECT_EQ(scanFolder().counters.filesRead, 1);
}

TEST_F(LogFolderScannerTest, LogNamesThatAreNotUtf8KeepTheirOwnEntriesAndAreNotReadAgain) {
    const Date morning = localDate(2025, 3, 14, 10);
    home.write("projects/plain.jsonl", eventLine(morning, 1, 1));
    // Two names apart only in bytes that are not UTF-8.
    home.write("projects/caf\xe9-\xff.jsonl", eventLine(morning, 100, 10));
    home.write("projects/caf\xe9-\xfe.jsonl", eventLine(morning, 1000, 0));
    const FolderScan cold = scanFolder();
    ASSERT_EQ(cold.counters.filesRead, 3);
    EXPECT_EQ(cold.days->at("2025-03-14").inputTokens, 1101);
    const ImportStateFile file(home.path() / "support");
    ASSERT_TRUE(file.save(ImportState{.files = files}));

    files = file.load().files;
    EXPECT_EQ(files.size(), 3u);
    EXPECT_TRUE(files.count(home.path().string() + ("/projects/caf\xef\xbf\xbd" "E9-\xef\xbf\xbd" "FF.jsonl")));
    const FolderScan warm = scanFolder();
    EXPECT_EQ(warm.counters.filesRead, 0);
    EXPECT_EQ(warm.counters.filesReused, 3);
    EXPECT_EQ(warm.days, cold.days);
}

TEST_F(LogFolderScannerTest, AFilesLatestQuotaGoesToTheDayItWasTakenAndTheLaterOneWins) {
    const Date day14 = localDate(2025, 3, 14, 10);
    const Date day15 = localDate(2025, 3, 15, 0, 30);
    // The quota of a day without events makes that day.
    home.write("projects/a.jsonl", eventLine(day14, 1, 1) + quotaLine(day15, 20) + quotaLine(day14, 90));
    home.write("projects/b.jsonl", quotaLine(day15.addingSeconds(60), 30));
    home.write("projects/c.jsonl", quotaLine(day15.addingSeconds(-60), 40));

    const FolderScan result = scanFolder();
    ASSERT_EQ(result.days->size(), 2u);
    EXPECT_FALSE(result.days->at("2025-03-14").quota);
    const DayUsage& quotaDay = result.days->at("2025-03-15");
    EXPECT_EQ(quotaDay.requests, 0);
    EXPECT_TRUE(quotaDay.sessions.empty());
    ASSERT_TRUE(quotaDay.quota);
    EXPECT_EQ(quotaDay.quota->at, day15.addingSeconds(60));
    EXPECT_EQ(quotaDay.quota->primaryPercent, 30.0);
}

}  // namespace
}  // namespace tallowen
