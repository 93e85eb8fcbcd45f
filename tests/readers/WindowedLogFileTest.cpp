#include "readers/LineSplitter.hpp"
#include "readers/WindowedLogFile.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>
#include <vector>

namespace tallowen {
namespace {

// Lines of the given lengths, line feeds not counted, the last without its own when `finalFeed` is false.
std::string linesOf(const std::vector<size_t>& lengths, bool finalFeed = true) {
    std::string text;
    for (size_t i = 0; i < lengths.size(); ++i) text += std::string(lengths[i], char('a' + i % 26)) + '\n';
    if (!finalFeed && !text.empty()) text.pop_back();
    return text;
}

TEST(WindowedLogFileTest, RunsHoldWholeLinesAndTogetherTheWholeFile) {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
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
        EXPECT_EQ(file->stamp().size, static_cast<int64_t>(text.size()));
        std::string joined;
        std::vector<std::string> lines, expected;
        file->forEachRun([&](std::string_view run) {
            // A run is a window's whole lines, or one line too long for a window.
            EXPECT_TRUE(run.size() <= page || run.find('\n') >= run.size() - 1);
            EXPECT_TRUE(joined.size() + run.size() == text.size() || run.back() == '\n');
            joined += run;
            forEachLine(run, [&](std::string_view line) { lines.emplace_back(line); });
        });
        EXPECT_FALSE(file->incomplete());
        EXPECT_EQ(joined, text);
        forEachLine(text, [&](std::string_view line) { expected.emplace_back(line); });
        EXPECT_EQ(lines, expected);
    }
    // A file shortened between two windows is incomplete; a folder is no log.
    const auto path = folder.write("log.jsonl", linesOf(std::vector<size_t>(400, 99)));
    auto file = WindowedLogFile::open(path, page);
    size_t runs = 0;
    file->forEachRun([&](std::string_view) {
        EXPECT_TRUE(++runs != 2 || ::truncate(path.c_str(), off_t(page)) == 0);
    });
    EXPECT_TRUE(file->incomplete());
    EXPECT_LE(runs, 3u);
    EXPECT_FALSE(WindowedLogFile::open(folder.path()));
}

}  // namespace
}  // namespace tallowen
