#include "import/ImportStateCodec.hpp"
#include "import/ImportStateFile.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <sys/stat.h>

namespace tallowen {
namespace {

// Modification times carry nanoseconds: they must survive the file exactly.
ImportState sampleState() {
    const DayUsage day{{"abc#0", "abc#1"}, 4, 1500, 20, {9, 14}, 7, 19,
                       QuotaSnapshot{Date{785000001.5}, 42.5, Date{785018000.25}, {}, {}, "plus"}};
    const FileEntry entry{123456789012, Date{785000000.123456789}, {{"2025-03-14", day}}};
    return ImportState{5, {{"/home/u/a.jsonl", entry}}};
}

TEST(ImportStateFileTest, EveryStateReadsBackAsItWasWritten) {
    // Escapes and characters at the edges of every UTF-8 length.
    const std::string text =
        "\"\\\n\x1f\x7f/a\u0080\u07ff\u0800\u2028\uffff\U00010000\U0010ffff" + std::string(1, '\0');
    constexpr double edges[] = {-0.0, 3.9223372036854776e20, 0x1p63, -0x1p63, 0x1p64, 1.7976931348623157e308,
                                4.9406564584124654e-324, 0.1 + 0.2};
    // Then any finite double, from its bits, and any 64-bit integer.
    std::mt19937_64 random{20250314};
    ImportState state = sampleState();
    for (size_t i = 0; i < 1000; ++i) {
        const double number = i < std::size(edges) ? edges[i] : std::bit_cast<double>(random());
        if (!std::isfinite(number)) continue;
        const int64_t integer = i % 3 == 0 ? (i % 2 == 0 ? INT64_MIN : INT64_MAX) : static_cast<int64_t>(random());
        const DayUsage day{{std::to_string(i), text}, integer, ~integer, 9007199254740993, {integer}, 0, -1,
                           QuotaSnapshot{Date{number}, -number, Date{number / 3}, {}, Date{-number}, text}};
        state.files[text + std::to_string(i)] = FileEntry{integer, Date{number}, {{std::to_string(i) + text, day}}};
    }
    const auto decoded = decodeImportState(encodeImportState(state));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(*decoded == state);
}

TEST(ImportStateFileTest, AnythingButAValidVersion5LoadsAsANewStateAndASaveReplacesItWhole) {
    const std::string valid = encodeImportState(sampleState());
    // One line, absent keys left out rather than null.
    for (const char* absent : {"\n", "null", "secondaryPercent"}) EXPECT_EQ(valid.find(absent), std::string::npos);
    std::string version4 = valid;
    version4.replace(version4.find("\"version\":5"), 11, "\"version\":4");
    const std::string cases[] = {
        version4, valid.substr(0, valid.size() / 2), "not json", "[]", "", R"({"version":5})",
        R"({"version":5,"files":{"a":{"size":1.5,"modified":0,"days":{}}}})",
        R"({"version":5,"files":{"a":{"size":1,"modified":0,"days":{"2025-01-01":{"sessions":[1]}}}}})",
    };
    testing::TempDir dir;
    const ImportStateFile file(dir.path() / "nested" / "support");
    for (const auto& text : cases) {
        dir.write("nested/support/import-state.json", text);
        EXPECT_EQ(file.load(), ImportState{}) << text;
    }
    ASSERT_TRUE(file.save(sampleState()));
    EXPECT_EQ(file.load(), sampleState());
    // A fifo in place of the file loads as a new state without waiting.
    std::filesystem::remove(file.location());
    ASSERT_EQ(::mkfifo(file.location().c_str(), 0600), 0);
    EXPECT_EQ(file.load(), ImportState{});

    // Only "at" is required of a quota.
    const auto quotaOnlyAt = decodeImportState(
        R"({"version":5,"files":{"a":{"size":1,"modified":2.5,"days":{"2025-01-01":{"sessions":["s#0","s#0"],)"
        R"("requests":1,"inputTokens":0,"outputTokens":0,"episodeHours":[3],"costCents":0,"waterMilliliters":0,)"
        R"("quota":{"at":10}}}}}})");
    ASSERT_TRUE(quotaOnlyAt);
    EXPECT_EQ(quotaOnlyAt->files.at("a").days.at("2025-01-01"),
              (DayUsage{{"s#0"}, 1, 0, 0, {3}, 0, 0, QuotaSnapshot{Date{10}, {}, {}, {}, {}, {}}}));
}

}  // namespace
}  // namespace tallowen
