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
#include <sys/stat.h>
#include <unistd.h>

namespace tallowen {
namespace {

namespace fs = std::filesystem;

// The stand-in reader's lines: "<input> <output> <unix seconds>", or "quota <percent> 0 <unix seconds>".
std::string line(int input, int output, Date at = testing::localDate(2025, 3, 14, 10)) {
    return std::to_string(input) + " " + std::to_string(output) + " " +
           std::to_string(static_cast<long long>(at.unixSeconds())) + "\n";
}

std::string quota(int percent, Date at) { return "quota " + line(percent, 0, at); }

using RunHook = std::function<void(std::string_view run)>;

class LogFolderScannerTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone{"Europe/Paris"};
    testing::TempDir home;
    FileEntries files;
    std::atomic<int> filesHandedOver = 0;

    // Reads the runs of a file, first showing each to `hook`.
    FolderScan scanned(const std::string& folder = "projects", RunHook hook = {}, ScanSettings settings = {}) {
        const LogReaderMaker maker = [this, hook] {
            return [this, hook](LineRuns& runs) {
                ++filesHandedOver;
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
    const FolderScan result = scanned();
    EXPECT_EQ(result.counters.filesRead, 4);
    EXPECT_EQ(filesHandedOver, 4);
    EXPECT_EQ(result.days,
              (DayMap{{"2025-03-14", {{"s1#0", "s6#0", "two.parts#0"}, 3, 300, 30, {10, 10, 10}, 3, 3, {}}}}));
    // Entries are keyed by absolute path; an empty file has an entry with no days.
    const std::string root = home.path().string() + "/projects/";
    EXPECT_EQ(files.size(), 4u);
    EXPECT_EQ(files.at(root + "b/c/s6.jsonl").size, static_cast<int64_t>(line(100, 10).size()));
    EXPECT_TRUE(files.at(root + "a/empty.jsonl").days.empty());
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
    FolderScan result = scanned();
    EXPECT_EQ(result.counters.filesReused, 1);
    EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 100);
    // One microsecond later is a change (a date holds about a tenth of a microsecond), and so is a new size.
    touch(123457789);
    EXPECT_EQ(scanned().days->at("2025-03-14").inputTokens, 900);
    home.write("projects/s.jsonl", line(900, 90) + line(1, 1));
    touch(123457789);
    EXPECT_EQ(scanned().days->at("2025-03-14").inputTokens, 901);
    EXPECT_EQ(filesHandedOver, 3);
}

// A file that cannot be read whole keeps its old entry and counts for nothing this
// time, nor does one gone since; the others are read, and it is read on the next run.
TEST_F(LogFolderScannerTest, AFileThatFailsKeepsItsOldEntryWhileTheOthersAreRead) {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    std::string pages;
    while (pages.size() < 5 * page) pages += line(200, 20);
    const struct {
        const char* why;
        std::string newBytes;
        std::function<void(const fs::path& failing, std::string_view run)> hook;
    } cases[] = {
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
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(cases[i].why);
        if (!cases[i].hook && ::geteuid() == 0) continue;  // the superuser reads every file
        const std::string folder = "case" + std::to_string(i);
        home.write(folder + "/ok.jsonl", line(1, 1));
        const fs::path failing = home.write(folder + "/failing.jsonl", line(100, 10));
        const fs::path gone = home.write(folder + "/gone.jsonl", line(7, 7));
        scanned(folder);
        const FileEntry before = files.at(failing.string());

        fs::remove(gone);
        home.write(folder + "/ok.jsonl", line(2, 2) + line(3, 3));
        home.write(folder + "/failing.jsonl", cases[i].newBytes);
        if (!cases[i].hook) fs::permissions(failing, fs::perms::none);
        const auto hook = [&](std::string_view run) { if (cases[i].hook) cases[i].hook(failing, run); };
        const FolderScan result = scanned(folder, hook, {.workerThreads = 1, .windowBytes = page});
        EXPECT_EQ(result.counters.filesRead, 1);
        EXPECT_EQ(result.counters.filesUnreadable, 1);
        EXPECT_EQ(files.at(failing.string()), before);
        EXPECT_TRUE(files.count(gone.string()));
        EXPECT_EQ(result.days->at("2025-03-14").inputTokens, 5);
        EXPECT_EQ(result.days->at("2025-03-14").sessions, (std::set<std::string>{"ok#0"}));

        std::error_code ignored;
        fs::permissions(failing, fs::perms::owner_read | fs::perms::owner_write, ignored);
        EXPECT_EQ(scanned(folder).counters.filesRead, fs::exists(failing) ? 1 : 0);
    }
}

TEST_F(LogFolderScannerTest, LogNamesThatAreNotUtf8KeepTheirOwnEntriesAndAreNotReadAgain) {
    home.write("projects/plain.jsonl", line(1, 1));
    // Two names apart only in bytes that are not UTF-8.
    home.write("projects/caf\xe9-\xff.jsonl", line(100, 10));
    home.write("projects/caf\xe9-\xfe.jsonl", line(1000, 0));
    const FolderScan cold = scanned();
    EXPECT_EQ(cold.days->at("2025-03-14").inputTokens, 1101);
    const ImportStateFile file(home.path() / "support");
    ASSERT_TRUE(file.save(ImportState{.files = files}));

    files = file.load().files;
    EXPECT_EQ(files.size(), 3u);
    EXPECT_TRUE(files.count(home.path().string() + ("/projects/caf\xef\xbf\xbd" "E9-\xef\xbf\xbd" "FF.jsonl")));
    const FolderScan warm = scanned();
    EXPECT_EQ(warm.counters.filesReused, 3);
    EXPECT_EQ(warm.days, cold.days);
}

TEST_F(LogFolderScannerTest, AFilesLatestQuotaGoesToTheDayItWasTakenAndTheLaterOneWins) {
    const Date day14 = testing::localDate(2025, 3, 14, 10), day15 = testing::localDate(2025, 3, 15, 0, 30);
    // The quota of a day without events makes that day.
    home.write("projects/a.jsonl", line(1, 1, day14) + quota(20, day15) + quota(90, day14));
    home.write("projects/b.jsonl", quota(30, day15.addingSeconds(60)));
    home.write("projects/c.jsonl", quota(40, day15.addingSeconds(-60)));
    const FolderScan result = scanned();
    ASSERT_EQ(result.days->size(), 2u);
    EXPECT_FALSE(result.days->at("2025-03-14").quota);
    const QuotaSnapshot latest{day15.addingSeconds(60), 30.0, {}, {}, {}, {}};
    EXPECT_EQ(result.days->at("2025-03-15"), (DayUsage{{}, 0, 0, 0, {}, 0, 0, latest}));
}

}  // namespace
}  // namespace tallowen
