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

using testing::TempDir;

ImportState sampleState() {
    ImportState state;
    FileEntry entry;
    entry.size = 123456789012;
    // Modification times carry nanoseconds: they must survive the file exactly.
    entry.modified = Date{785000000.123456789};
    DayUsage day;
    day.sessions = {"abc#0", "abc#1"};
    day.requests = 4;
    day.inputTokens = 1500;
    day.outputTokens = 20;
    day.episodeHours = {9, 14};
    day.costCents = 7;
    day.waterMilliliters = 19;
    entry.days["2025-03-14"] = day;
    day.quota = QuotaSnapshot{Date{785000001.5}, 42.5, Date{785018000.25}, {}, {}, "plus"};
    entry.days["2025-03-15"] = day;
    state.files["/home/u/.codex/sessions/a.jsonl"] = entry;
    return state;
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
        for (;;) {
            const double value = std::bit_cast<double>(random_());
            if (std::isfinite(value)) return value;
        }
    }

    std::string text() {
        constexpr char32_t characters[] = {U'"', U'\\', U'\n', U'\0', U'\x1f', U'\x7f', U'/', U'a',
                                           U'\u00e9', U'\u2028', U'\ufffd', U'\U0001f600', U'\U0010ffff'};
        std::string out;
        for (int length = pick(6); length > 0; --length) {
            char32_t c = characters[pick(13)];
            if (pick(2) == 0) c = static_cast<char32_t>(random_() % 0x110000);
            if (c >= 0xd800 && c <= 0xdfff) c = U'x';
            appendUtf8(out, c);
        }
        return out;
    }

    static void appendUtf8(std::string& out, char32_t c) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xc0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3f));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xe0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3f));
            out += static_cast<char>(0x80 | (c & 0x3f));
        } else {
            out += static_cast<char>(0xf0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3f));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3f));
            out += static_cast<char>(0x80 | (c & 0x3f));
        }
    }

    template <typename T>
    std::optional<T> maybe(T value) {
        return pick(2) == 0 ? std::optional<T>{} : std::optional<T>{value};
    }

    DayUsage dayUsage() {
        DayUsage day;
        for (int i = pick(3); i > 0; --i) day.sessions.insert(text());
        day.requests = integer();
        day.inputTokens = integer();
        day.outputTokens = integer();
        for (int i = pick(3); i > 0; --i) day.episodeHours.push_back(integer());
        day.costCents = integer();
        day.waterMilliliters = integer();
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

TEST(ImportStateFileTest, CompactWithAbsentKeysOmitted) {
    const ImportState state = sampleState();
    const std::string text = encodeImportState(state);
    EXPECT_EQ(text.find("null"), std::string::npos);
    EXPECT_EQ(text.find("secondaryPercent"), std::string::npos);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_FALSE(decodeImportState(text)->files.begin()->second.days.at("2025-03-14").quota);
}

TEST(ImportStateFileTest, AnythingButAValidVersion5LoadsAsANewState) {
    const std::string valid = encodeImportState(sampleState());
    std::string version4 = valid;
    version4.replace(version4.find("\"version\":5"), 11, "\"version\":4");
    const std::string cases[] = {
        version4,
        valid.substr(0, valid.size() / 2),
        "not json",
        "[]",
        "",
        R"({"version":5})",
        R"({"version":5,"files":{"a":{"size":1.5,"modified":0,"days":{}}}})",
        R"({"version":5,"files":{"a":{"size":1,"modified":0,"days":{"2025-01-01":{"sessions":[1]}}}}})",
    };
    TempDir dir;
    const ImportStateFile file(dir.path() / "support");
    for (const auto& text : cases) {
        dir.write("support/import-state.json", text);
        const ImportState loaded = file.load();
        EXPECT_EQ(loaded.version, 5);
        EXPECT_TRUE(loaded.files.empty()) << text;
    }
    // Only "at" is required of a quota.
    const auto quotaOnlyAt = decodeImportState(
        R"({"version":5,"files":{"a":{"size":1,"modified":2.5,"days":{"2025-01-01":{"sessions":["s#0","s#0"],)"
        R"("requests":1,"inputTokens":0,"outputTokens":0,"episodeHours":[3],"costCents":0,"waterMilliliters":0,)"
        R"("quota":{"at":10}}}}}})");
    ASSERT_TRUE(quotaOnlyAt);
    const DayUsage& day = quotaOnlyAt->files.at("a").days.at("2025-01-01");
    EXPECT_EQ(day.sessions.size(), 1u);
    ASSERT_TRUE(day.quota);
    EXPECT_FALSE(day.quota->primaryPercent || day.quota->primaryResetAt || day.quota->secondaryPercent ||
                 day.quota->secondaryResetAt || day.quota->plan);
}

TEST(ImportStateFileTest, SaveReplacesATruncatedFileWhole) {
    TempDir dir;
    const ImportStateFile file(dir.path() / "nested" / "TallowenMac");
    dir.write("nested/TallowenMac/import-state.json", "{\"version\":5,\"fi");
    EXPECT_TRUE(file.load().files.empty());
    ASSERT_TRUE(file.save(sampleState()));
    EXPECT_EQ(file.load(), sampleState());
}

TEST(ImportStateFileTest, AFifoInPlaceOfTheFileLoadsAsANewStateWithoutWaiting) {
    TempDir dir;
    ASSERT_EQ(::mkfifo((dir.path() / "import-state.json").c_str(), 0600), 0);
    EXPECT_TRUE(ImportStateFile(dir.path()).load().files.empty());
}

}  // namespace
}  // namespace tallowen
