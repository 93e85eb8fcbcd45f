#include "import/ImportStateFile.hpp"
#include "model/DaysFromEvents.hpp"
#include "readers/LineSplitter.hpp"
#include "readers/LogFolderScanner.hpp"
#include "readers/WindowedLogFile.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <tuple>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::localDate;
namespace fs = std::filesystem;

const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));

// Lines of the given lengths, line feeds not counted, the last without its own when `finalFeed` is false.
std::string linesOf(const std::vector<size_t>& lengths, bool finalFeed = true) {
    std::string text;
    for (size_t i = 0; i < lengths.size(); ++i) text += std::string(lengths[i], char('a' + i % 26)) + '\n';
    if (!finalFeed && !text.empty()) text.pop_back();
    return text;
}

TEST(WindowedLogFileTest, RunsHoldWholeLinesAndTogetherTheWholeFile) {
    testing::TempDir folder;
    for (const std::string& text : {
             linesOf(std::vector<size_t>(3000, 7)),           // short lines over several windows
             linesOf({page - 1, 10, page - 1, 3}),            // a line ends on a window's last byte
             linesOf({page - 5, 20, 100}, false),             // a line crosses a window's edge
             linesOf({10, 2 * page + 77, 10, 5}),             // a line longer than two windows
             linesOf({3 * page + 1}, false),                  // one line longer than the window, no final feed
             linesOf({0, 0, page, 0, 4}), std::string()}) {   // empty lines, a line of one window; an empty file
        SCOPED_TRACE(text.size());
        auto file = WindowedLogFile::open(folder.write("log.jsonl", text), page);
        ASSERT_TRUE(file);
        std::string joined;
        file->forEachRun([&](std::string_view run) {
            // A run is a window's whole lines, or one line too long for a window: the runs
            // joined give the file, so its lines are theirs.
            EXPECT_TRUE(run.size() <= page || run.find('\n') >= run.size() - 1);
            EXPECT_TRUE(joined.size() + run.size() == text.size() || run.back() == '\n');
            joined += run;
        });
        EXPECT_FALSE(file->incomplete());
        EXPECT_EQ(joined, text);
    }
    // A folder is no log. (A file shortened while read is a failing file of the folder scan.)
    EXPECT_FALSE(WindowedLogFile::open(folder.path()));
}

// The stand-in reader's lines: "<input> <output> <unix seconds>", or "quota <percent> 0 <unix seconds>".
std::string line(int input, int output, Date at = localDate(2025, 3, 14, 10)) {
    return std::to_string(input) + " " + std::to_string(output) + " " +
           std::to_string(static_cast<long long>(at.unixSeconds())) + "\n";
}

std::string quota(int percent, Date at) { return "quota " + line(percent, 0, at); }

class LogFolderScannerTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone{"Europe/Paris"};
    testing::TempDir home;
    FileEntries files;

    // Reads the runs of a file, first showing each to `hook`.
    FolderScan scanned(const std::string& folder = "projects", std::function<void(std::string_view run)> hook = {},
                       ScanSettings settings = {}) {
        const LogReaderMaker maker = [this, hook] {
            return [this, hook](LineRuns& runs) {
                FileReading reading;
                runs.forEachRun([&](std::string_view run) {
                    if (hook) hook(run);
                    forEachLine(run, [&](std::string_view text) {
                        const bool isQuota = text.starts_with("quota ");
                        long long seconds = 0, input = 0, output = 0;
                        const std::string numbers(text.substr(isQuota ? 6 : 0));
                        if (std::sscanf(numbers.c_str(), "%lld %lld %lld", &input, &output, &seconds) != 3) return;
                        const Date at = Date::fromUnixSeconds(double(seconds));
                        if (isQuota) keepLaterQuota(reading.quota, {at, double(input), {}, {}, {}, {}});
                        else reading.events.push_back({at, input, output, 1, 1});
                    });
                });
                return reading;
            };
        };
        return scan(home.path() / folder, files, maker, LocalCalendar{}, settings);
    }
};

TEST_F(LogFolderScannerTest, ReadsVisibleJsonlFilesAtAnyDepthOnly) {
    EXPECT_FALSE(scanned().days);
    fs::create_directories(home.path() / "projects");
    EXPECT_EQ(scanned().days, DayMap{});

    for (const char* name : {"a/s1.jsonl", "b/c/s6.jsonl", "a/two.parts.jsonl"})
        home.write("projects/" + std::string(name), line(100, 10));
    home.write("projects/a/empty.jsonl", "");
    // Passed over: hidden file, file in a hidden folder, other letter case, other extensions.
    for (const char* name : {"a/.s3.jsonl", ".hidden/s2.jsonl", "a/s4.JSONL", "a/s5.json", "a/s7.jsonl.bak", "a/jsonl"})
        home.write("projects/" + std::string(name), line(1000, 1000));
    EXPECT_EQ(scanned().days,
              (DayMap{{"2025-03-14", {{"s1#0", "s6#0", "two.parts#0"}, 3, 300, 30, {10, 10, 10}, 3, 3, {}}}}));
    // Entries are keyed by absolute path; an empty file has an entry with no days.
    EXPECT_EQ(files.size(), 4u);
    EXPECT_TRUE(files.at((home.path() / "projects/a/empty.jsonl").string()).days.empty());
}

TEST_F(LogFolderScannerTest, OnlyAChangeOfSizeOrTimeMakesAFileReadAgain) {
    const auto path = home.write("projects/s.jsonl", line(100, 10));
    const auto touch = [&](long nanoseconds) {
        const timespec times[2] = {{1741950000, nanoseconds}, {1741950000, nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    };
    touch(123456789);
    scanned();
    // Same size, time put back: the stored days stand, though the bytes changed.
    home.write("projects/s.jsonl", line(900, 90));
    touch(123456789);
    EXPECT_EQ(scanned().days->at("2025-03-14").inputTokens, 100);
    // One microsecond later is a change (a date holds about a tenth of a microsecond), and so is a new size.
    touch(123457789);
    EXPECT_EQ(scanned().days->at("2025-03-14").inputTokens, 900);
    home.write("projects/s.jsonl", line(900, 90) + line(1, 1));
    touch(123457789);
    EXPECT_EQ(scanned().days->at("2025-03-14").inputTokens, 901);
}

// A file that cannot be read whole keeps its old entry and counts for nothing this
// time, nor does one gone since; the others are read, and it is read on the next run.
TEST_F(LogFolderScannerTest, AnUnreadableFileOrOneThatFailsKeepsItsOldEntryWhileTheOthersAreRead) {
    std::string pages;
    while (pages.size() < 5 * page) pages += line(200, 20);
    using Failure = std::function<void(const fs::path& failing, std::string_view run)>;
    const std::tuple<const char*, std::string, Failure> cases[] = {
        {"unreadable", line(200, 20), nullptr},
        {"removed while a larger one is read", line(200, 20),
         [](const fs::path& failing, std::string_view run) { if (run.starts_with("2 2")) fs::remove(failing); }},
        {"out of memory", line(200, 20),
         [](const fs::path&, std::string_view run) { if (run.starts_with("200")) throw std::bad_alloc(); }},
        {"shortened while read", pages,
         [](const fs::path& failing, std::string_view run) {
             if (run.starts_with("200")) (void)!::truncate(failing.c_str(), 0);
         }},
    };
    for (const auto& [why, newBytes, failure] : cases) {
        SCOPED_TRACE(why);
        if (!failure && ::geteuid() == 0) continue;  // the superuser reads every file
        const std::string folder = why;
        home.write(folder + "/ok.jsonl", line(1, 1));
        const fs::path failing = home.write(folder + "/failing.jsonl", line(100, 10));
        const fs::path gone = home.write(folder + "/gone.jsonl", line(7, 7));
        scanned(folder);
        const FileEntry before = files.at(failing.string());

        fs::remove(gone);
        home.write(folder + "/ok.jsonl", line(2, 2) + line(3, 3));
        home.write(folder + "/failing.jsonl", newBytes);
        if (!failure) fs::permissions(failing, fs::perms::none);
        const auto hook = [&](std::string_view run) { if (failure) failure(failing, run); };
        const FolderScan result = scanned(folder, hook, {.workerThreads = 1, .windowBytes = page});
        EXPECT_EQ(std::tuple(result.counters.filesRead, result.counters.filesUnreadable), std::tuple(1, 1));
        EXPECT_EQ(files.at(failing.string()), before);
        EXPECT_TRUE(files.count(gone.string()));
        EXPECT_EQ(result.days, (DayMap{{"2025-03-14", {{"ok#0"}, 2, 5, 5, {10}, 2, 2, {}}}}));

        if (!failure) fs::permissions(failing, fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(scanned(folder).counters.filesRead, fs::exists(failing) ? 1 : 0);
    }
}

TEST_F(LogFolderScannerTest, LogNamesThatAreNotUtf8KeepTheirOwnEntriesAndAreNotReadAgain) {
    // Two names apart only in bytes that are not UTF-8.
    home.write("projects/caf\xe9-\xff.jsonl", line(100, 10));
    home.write("projects/caf\xe9-\xfe.jsonl", line(1000, 0));
    const FolderScan cold = scanned();
    EXPECT_EQ(cold.days->at("2025-03-14").inputTokens, 1100);
    const ImportStateFile file(home.path() / "support");
    ASSERT_TRUE(file.save(ImportState{.files = files}));

    files = file.load().files;
    const FolderScan warm = scanned();
    EXPECT_EQ(warm.counters.filesReused, 2);
    EXPECT_EQ(warm.days, cold.days);
}

TEST_F(LogFolderScannerTest, AFilesLatestQuotaGoesToTheDayItWasTakenAndTheLaterOneWins) {
    const Date day14 = localDate(2025, 3, 14, 10), day15 = localDate(2025, 3, 15, 0, 30);
    // The quota of a day without events makes that day.
    home.write("projects/a.jsonl", line(1, 1, day14) + quota(20, day15) + quota(90, day14));
    home.write("projects/b.jsonl", quota(30, day15.addingSeconds(60)));
    home.write("projects/c.jsonl", quota(40, day15.addingSeconds(-60)));
    const QuotaSnapshot latest{day15.addingSeconds(60), 30.0, {}, {}, {}, {}};
    EXPECT_EQ(scanned().days, (DayMap{{"2025-03-14", {{"a#0"}, 1, 1, 1, {10}, 1, 1, {}}},
                                      {"2025-03-15", {{}, 0, 0, 0, {}, 0, 0, latest}}}));
}

UsageEvent at(int day, int hour, int minute, int second = 0) {
    return UsageEvent{localDate(2025, 3, day, hour, minute, second), day, 1, 1, 2};
}

// Episodes split on a pause of more than two hours; each counts on the day it began, its tokens
// on the days they were used. Here 10:00 and 12:00 are one episode, 14:00:01 starts a second and
// 23:30 a third, which goes on past midnight.
TEST(DaysFromEventsTest, EpisodeRuleSplitsSessionsAndBooksHoursOnTheStartDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    EXPECT_EQ(daysFromEvents({at(15, 0, 30), at(14, 12, 0), at(14, 10, 0), at(14, 23, 30), at(14, 14, 0, 1)}, "s",
                             LocalCalendar{}),
              (DayMap{{"2025-03-14", {{"s#0", "s#1", "s#2"}, 4, 56, 4, {10, 14, 23}, 4, 8, {}}},
                      {"2025-03-15", {{}, 1, 15, 1, {}, 1, 2, {}}}}));
}

TEST(DaysFromEventsDeathTest, TokenOverflowStopsTheProcess) {
    const int64_t big = INT64_MAX - 1;
    EXPECT_DEATH(daysFromEvents({{Date{0}, big, 0, 0, 0}, {Date{1}, big, 0, 0, 0}}, "s", LocalCalendar{}), "overflow");
}

}  // namespace
}  // namespace tallowen
