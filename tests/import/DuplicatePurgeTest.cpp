#include "import/DuplicatePurge.hpp"

#include "store/SqliteSampleStore.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::slotSample;

SampleStoreOpener storeHolding(const std::filesystem::path& path, const std::vector<UsageSample>& samples) {
    SqliteSampleStore store(path);
    for (const auto& sample : samples) store.insert(sample);
    store.save();
    return [path] { return std::make_unique<SqliteSampleStore>(path); };
}

TEST(DuplicatePurgeTest, KeepsTheNewestOfEachRunKey) {
    const std::string codex = sampleKey("2025-03-14", "codex"), codex15 = sampleKey("2025-03-15", "codex");
    struct Case {
        const char* name;
        std::vector<std::pair<const char*, double>> stored;  // tool and updatedAt, all on 14 March
        std::set<std::string> runKeys;
        std::vector<double> survivors;  // the others are deleted
    } cases[] = {
        {"two codex samples", {{"codex", 10}, {"codex", 11}}, {codex}, {11}},
        {"three for one key", {{"codex", 11}, {"codex", 12}, {"codex", 10}, {"cursor", 10}}, {codex}, {12, 10}},
        {"unknown tool and a bar in the tool", {{"phone-vision", 10}, {"phone-vision", 12}, {"x|y", 11}, {"x|y", 10}},
         {sampleKey("2025-03-14", "phone-vision"), sampleKey("2025-03-14", "x|y")}, {12, 11}},
        {"empty store", {}, {}, {}},
        {"as many run keys as records", {{"codex", 10}, {"codex", 11}}, {codex, codex15}, {10, 11}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::TempDir dir;
        std::vector<UsageSample> stored;
        for (const auto& [tool, stamp] : c.stored) stored.push_back(slotSample("2025-03-14", tool, Date{stamp}));
        const auto deleted = purgeDuplicates(storeHolding(dir.path() / "store.sqlite", stored), c.runKeys, nullptr);
        ASSERT_TRUE(deleted) << deleted.error();
        EXPECT_EQ(*deleted, std::ssize(c.stored) - std::ssize(c.survivors));
        std::vector<double> survivors;
        for (const auto& sample : SqliteSampleStore(dir.path() / "store.sqlite").fetchAll())
            survivors.push_back(sample.updatedAt.secondsSinceReferenceDate);
        EXPECT_EQ(survivors, c.survivors);
    }
}

TEST(DuplicatePurgeTest, ManyExtraRecordsAreFoundByScanningEveryKeyAndAStoreFailureIsTheUsersLine) {
    testing::TempDir dir;
    std::vector<UsageSample> stored;
    for (const auto& [tool, stamp] : {std::pair{"codex", 1}, {"codex", 2}, {"phone-vision", 5}, {"phone-vision", 7},
                                      {"phone-vision", 6}, {"cursor", 9}, {"cursor", 8}})
        stored.push_back(slotSample("2025-03-14", tool, Date{double(stamp)}));
    for (int i = 0; i < 405; ++i)
        stored.push_back(slotSample("2024-" + std::to_string(1000 + i), "claude-code", Date{3}));
    std::vector<double> progress;
    const auto deleted = purgeDuplicates(storeHolding(dir.path() / "store.sqlite", stored),
                                         {sampleKey("2025-03-14", "codex")},
                                         [&](double fraction) { progress.push_back(fraction); }, 3);
    EXPECT_EQ(*deleted, 4);
    // The run key's pass, then one pass over the 407 other distinct keys.
    ASSERT_EQ(progress.size(), 1u + 407u);
    EXPECT_EQ(progress[0], 1.0);
    for (size_t i = 2; i < progress.size(); ++i) EXPECT_LT(progress[i - 1], progress[i]);
    EXPECT_EQ(progress.back(), 1.0);
    SqliteSampleStore reopened(dir.path() / "store.sqlite");
    EXPECT_EQ(reopened.count(), 405 + 3);  // so each of the three slots holds only its newest
    for (const auto& [tool, newest] : {std::pair{"codex", 2.0}, {"phone-vision", 7.0}, {"cursor", 9.0}})
        EXPECT_EQ(reopened.newestInSlot({"2025-03-14", tool})->updatedAt, Date{newest});

    const auto junk = dir.write("junk.sqlite", std::string(4096, '#'));
    const auto failed = purgeDuplicates([junk] { return std::make_unique<SqliteSampleStore>(junk); },
                                        {sampleKey("2025-03-14", "codex")}, nullptr);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error(), "Nettoyage des doublons : file is not a database");
}

}  // namespace
}  // namespace tallowen
