#include "import/ImportStateCodec.hpp"
#include "import/ImportStateFile.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

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

TEST(ImportStateFileTest, RoundTripsExactlyAndOmitsAbsentKeys) {
    const ImportState state = sampleState();
    const std::string text = encodeImportState(state);
    EXPECT_EQ(text.find("null"), std::string::npos);
    EXPECT_EQ(text.find("secondaryPercent"), std::string::npos);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    const auto decoded = decodeImportState(text);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, state);
    EXPECT_FALSE(decoded->files.begin()->second.days.at("2025-03-14").quota);
}

TEST(ImportStateFileTest, BytesThatAreNotUtf8AreWrittenAsReplacementCharacters) {
    ImportState state = sampleState();
    FileEntry entry = state.files.begin()->second;
    entry.days.begin()->second.sessions = {"\xc3\x28#0"};
    state.files["/logs/\xff\xfe.jsonl"] = entry;
    const auto decoded = decodeImportState(encodeImportState(state));
    ASSERT_TRUE(decoded);
    ASSERT_TRUE(decoded->files.count("/logs/\xef\xbf\xbd\xef\xbf\xbd.jsonl"));
    EXPECT_EQ(decoded->files.at("/logs/\xef\xbf\xbd\xef\xbf\xbd.jsonl").days.begin()->second.sessions,
              (std::set<std::string>{"\xef\xbf\xbd(#0"}));
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
