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

// Random states over the whole range of every field: any 64-bit integer, any
// finite double (from its bits, so subnormals, -0 and values past 2^63 come up),
// texts mixing escapes and characters of every UTF-8 length.
class RandomStates {
public:
    ImportState next() {
        ImportState state;
        for (int file = pick(4); file > 0; --file) {
            FileEntry entry{integer(), Date{number()}, {}};
            for (int day = pick(4); day > 0; --day) entry.days[text()] = dayUsage();
            state.files[text()] = std::move(entry);
        }
        return state;
    }

private:
    int pick(int below) { return static_cast<int>(random_() % static_cast<uint64_t>(below)); }
    int64_t integer() {
        constexpr int64_t edges[] = {0, -1, 23, INT64_MAX, INT64_MIN, 9007199254740993};
        return pick(3) == 0 ? edges[pick(6)] : static_cast<int64_t>(random_());
    }
    double number() {
        constexpr double edges[] = {0.0, -0.0, 3.9223372036854776e20, 0x1p63, -0x1p63, 0x1p64,
                                    1.7976931348623157e308, 4.9406564584124654e-324, 785000000.123456789};
        if (pick(3) == 0) return edges[pick(9)];
        for (;;)
            if (const double value = std::bit_cast<double>(random_()); std::isfinite(value)) return value;
    }
    std::string text() {
        constexpr char32_t characters[] = {U'"', U'\\', U'\n', U'\0', U'\x1f', U'\x7f', U'/', U'a',
                                           U'\u00e9', U'\u2028', U'\ufffd', U'\U0001f600', U'\U0010ffff'};
        constexpr unsigned char leads[] = {0, 0xc0, 0xe0, 0xf0};
        std::string out;
        for (int length = pick(6); length > 0; --length) {
            char32_t c = pick(2) == 0 ? characters[pick(13)] : static_cast<char32_t>(random_() % 0x110000);
            if (c >= 0xd800 && c <= 0xdfff) c = U'x';
            const int extra = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
            out += static_cast<char>(leads[extra] | (c >> (6 * extra)));
            for (int shift = 6 * (extra - 1); shift >= 0; shift -= 6)
                out += static_cast<char>(0x80 | ((c >> shift) & 0x3f));
        }
        return out;
    }
    template <typename T>
    std::optional<T> maybe(T value) {
        return pick(2) == 0 ? std::optional<T>{} : std::optional<T>{value};
    }
    DayUsage dayUsage() {
        DayUsage day{{}, integer(), integer(), integer(), {}, integer(), integer(), {}};
        for (int i = pick(3); i > 0; --i) day.sessions.insert(text());
        for (int i = pick(3); i > 0; --i) day.episodeHours.push_back(integer());
        if (pick(2) == 0)
            day.quota = QuotaSnapshot{Date{number()}, maybe(number()), maybe(Date{number()}),
                                      maybe(number()),  maybe(Date{number()}), maybe(text())};
        return day;
    }

    std::mt19937_64 random_{20250314};
};

TEST(ImportStateFileTest, EveryStateReadsBackAsItWasWritten) {
    RandomStates states;
    for (int i = 0; i < 2000; ++i) {
        const ImportState state = states.next();
        const std::string text = encodeImportState(state);
        const auto decoded = decodeImportState(text);
        ASSERT_TRUE(decoded) << text;
        ASSERT_EQ(*decoded, state) << text;
    }
}

TEST(ImportStateFileTest, AnythingButAValidVersion5LoadsAsANewStateAndASaveReplacesItWhole) {
    const std::string valid = encodeImportState(sampleState());
    // One line, absent keys left out rather than null.
    EXPECT_EQ(valid.find_first_of("\n"), std::string::npos);
    EXPECT_EQ(valid.find("null"), std::string::npos);
    EXPECT_EQ(valid.find("secondaryPercent"), std::string::npos);
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
