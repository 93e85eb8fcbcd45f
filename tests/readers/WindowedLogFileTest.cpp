#include "readers/LineSplitter.hpp"
#include "readers/WindowedLogFile.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>
#include <vector>

namespace tallowen {
namespace {

// Lines of the given lengths (line feed not counted), the last one without its
// line feed when `finalFeed` is false.
std::string linesOf(const std::vector<size_t>& lengths, bool finalFeed) {
    std::string text;
    char fill = 'a';
    for (size_t length : lengths) {
        text.append(length, fill);
        text += '\n';
        fill = fill == 'z' ? 'a' : static_cast<char>(fill + 1);
    }
    if (!finalFeed && !text.empty()) text.pop_back();
    return text;
}

TEST(WindowedLogFileTest, RunsHoldWholeLinesAndTogetherTheWholeFile) {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    struct Case {
        const char* why;
        std::vector<size_t> lengths;
        bool finalFeed;
    };
    const Case cases[] = {
        {"short lines over several windows", std::vector<size_t>(3000, 7), true},
        {"a line ends on the window's last byte", {page - 1, 10, page - 1, 3}, true},
        {"a line crosses the window's edge", {page - 5, 20, 100}, false},
        {"a line longer than two windows, between short ones", {10, 2 * page + 77, 10, 5}, true},
        {"the file is one line longer than a window, without a final feed", {3 * page + 1}, false},
        {"empty lines and a line of exactly one window", {0, 0, page, 0, 4}, true},
        {"an empty file", {}, true},
    };
    testing::TempDir folder;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const std::string text = linesOf(c.lengths, c.finalFeed);
        auto file = WindowedLogFile::open(folder.write("log.jsonl", text), page);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->stamp().size, static_cast<int64_t>(text.size()));
        std::string joined;
        std::vector<std::string> lines;
        file->forEachRun([&](std::string_view run) {
            // A run is a window's whole lines, or one line too long for a window.
            EXPECT_TRUE(run.size() <= page || run.find('\n') >= run.size() - 1);
            if (joined.size() + run.size() < text.size()) {
                EXPECT_EQ(run.back(), '\n');
            }
            joined += run;
            forEachLine(run, [&](std::string_view line) { lines.emplace_back(line); });
        });
        EXPECT_FALSE(file->incomplete());
        EXPECT_EQ(joined, text);
        std::vector<std::string> expected;
        forEachLine(text, [&](std::string_view line) { expected.emplace_back(line); });
        EXPECT_EQ(lines, expected);
    }
}

TEST(WindowedLogFileTest, AFileShortenedBetweenWindowsIsIncomplete) {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    testing::TempDir folder;
    const auto path = folder.write("log.jsonl", linesOf(std::vector<size_t>(400, 99), true));
    auto file = WindowedLogFile::open(path, page);
    ASSERT_TRUE(file);
    size_t runs = 0;
    file->forEachRun([&](std::string_view) {
        if (++runs == 2) {
            EXPECT_EQ(::truncate(path.c_str(), static_cast<off_t>(page)), 0);
        }
    });
    EXPECT_TRUE(file->incomplete());
    EXPECT_LE(runs, 3u);
    EXPECT_FALSE(WindowedLogFile::open(folder.path()));
}

}  // namespace
}  // namespace tallowen
