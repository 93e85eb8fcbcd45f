#include "import/DuplicatePurge.hpp"

#include "store/SqliteSampleStore.hpp"
#include "support/Dates.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>


namespace tallowen {
namespace {

using testing::slotSample;
using testing::utcDate;

SampleStoreOpener opener(const std::filesystem::path& path) {
    return [path] { return std::make_unique<SqliteSampleStore>(path); };
}

void storeAll(const std::filesystem::path& path, const std::vector<UsageSample>& samples) {
    SqliteSampleStore store(path);
    for (const auto& sample : samples) store.insert(sample);
    store.save();
}

TEST(DuplicatePurgeTest, KeepsTheNewestOfEachRunKey) {
    const Date ten = utcDate(2025, 3, 14, 10), eleven = utcDate(2025, 3, 14, 11), noon = utcDate(2025, 3, 14, 12);
    const std::string codexKey = sampleKey("2025-03-14", "codex");
    struct Case {
        const char* name;
        std::vector<UsageSample> stored;
        std::set<std::string> runKeys;
        int64_t deleted;
        std::vector<Date> survivors;
    };
    const Case cases[] = {
        {"two codex samples", {slotSample("2025-03-14", "codex", ten), slotSample("2025-03-14", "codex", eleven)},
         {codexKey}, 1, {eleven}},
        {"three for one key",
         {slotSample("2025-03-14", "codex", eleven), slotSample("2025-03-14", "codex", noon),
          slotSample("2025-03-14", "codex", ten), slotSample("2025-03-14", "cursor", ten)},
         {codexKey}, 2, {noon, ten}},
        {"unknown tool and a bar in the tool",
         {slotSample("2025-03-14", "phone-vision", ten), slotSample("2025-03-14", "phone-vision", noon),
          slotSample("2025-03-14", "x|y", eleven), slotSample("2025-03-14", "x|y", ten)},
         {sampleKey("2025-03-14", "phone-vision"), sampleKey("2025-03-14", "x|y")}, 2, {noon, eleven}},
        {"empty store", {}, {}, 0, {}},
        {"as many run keys as records",
         {slotSample("2025-03-14", "codex", ten), slotSample("2025-03-14", "codex", eleven)},
         {codexKey, sampleKey("2025-03-15", "codex")}, 0, {ten, eleven}},
        {"few extras outside the run keys are left to the writer",
         {slotSample("2025-03-14", "codex", ten), slotSample("2025-03-14", "codex", eleven)},
         {sampleKey("2025-03-15", "codex")}, 0, {ten, eleven}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::TempDir dir;
        const auto path = dir.path() / SqliteSampleStore::fileName;
        storeAll(path, c.stored);
        std::vector<double> progress;
        const auto deleted = purgeDuplicates(opener(path), c.runKeys, [&](double done) { progress.push_back(done); });
        ASSERT_TRUE(deleted) << deleted.error();
        EXPECT_EQ(*deleted, c.deleted);
        if (c.deleted > 0) {
            EXPECT_EQ(progress.back(), 1.0);
        }
        std::vector<Date> survivors;
        for (const auto& sample : SqliteSampleStore(path).fetchAll()) survivors.push_back(sample.updatedAt);
        EXPECT_EQ(survivors, c.survivors);
    }
    EXPECT_EQ(purgeLogLine(12), "TallowenCompanion: 12 doublon(s) supprimé(s)");
}

TEST(DuplicatePurgeTest, ManyExtraRecordsAreFoundByScanningEveryKey) {
    testing::TempDir dir;
    const auto path = dir.path() / SqliteSampleStore::fileName;
    std::vector<UsageSample> stored;
    for (const auto& [tool, stamps] : {std::pair<std::string, std::vector<double>>{"codex", {1, 2}},
                                       {"phone-vision", {5, 7, 6}},
                                       {"cursor", {9, 8}}})
        for (const double stamp : stamps) stored.push_back(slotSample("2025-03-14", tool, Date{stamp}));
    for (int i = 0; i < 405; ++i)
        stored.push_back(slotSample("2024-" + std::to_string(1000 + i), "claude-code", Date{3}));
    storeAll(path, stored);

    std::vector<double> progress;
    const auto deleted = purgeDuplicates(
        opener(path), {sampleKey("2025-03-14", "codex")}, [&](double fraction) { progress.push_back(fraction); }, 3);
    EXPECT_EQ(*deleted, 4);
    // The run key's pass, then one pass over the 407 other distinct keys.
    ASSERT_EQ(progress.size(), 1u + 407u);
    EXPECT_EQ(progress[0], 1.0);
    for (size_t i = 2; i < progress.size(); ++i) EXPECT_LT(progress[i - 1], progress[i]);
    EXPECT_EQ(progress.back(), 1.0);

    SqliteSampleStore reopened(path);
    EXPECT_EQ(reopened.count(), 408);
    for (const auto& [tool, newest] : {std::pair{"codex", 2.0}, {"phone-vision", 7.0}, {"cursor", 9.0}}) {
        EXPECT_EQ(reopened.count({"2025-03-14", tool}), 1);
        EXPECT_EQ(reopened.newestInSlot({"2025-03-14", tool})->updatedAt, Date{newest});
    }
}

TEST(DuplicatePurgeTest, AStoreFailureIsTheLineShownToTheUser) {
    testing::TempDir dir;
    const auto path = dir.write("store.sqlite", std::string(4096, '#'));
    const auto deleted = purgeDuplicates(opener(path), {sampleKey("2025-03-14", "codex")}, nullptr);
    ASSERT_FALSE(deleted);
    EXPECT_EQ(deleted.error(), "Nettoyage des doublons : file is not a database");
}

}  // namespace
}  // namespace tallowen
