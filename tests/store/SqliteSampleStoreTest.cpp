#include "store/SqliteSampleStore.hpp"

#include "store/SampleStoreConformance.hpp"
#include "support/Samples.hpp"

#include <unistd.h>

namespace tallowen::testing {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Sqlite, SampleStoreConformance,
    ::testing::Values(SampleStoreFactory{
        "Sqlite", [](const auto& path) { return std::make_unique<SqliteSampleStore>(path); },
        [](const auto& path) { return std::make_unique<SqliteSampleStore>(path, SqliteSampleStore::Access::readOnly); }}),
    [](const auto& param) { return param.param.name; });

TEST(SqliteSampleStoreTest, RoundTripsDayRecordsExactly) {
    TempDir dir;
    const auto path = dir.path() / SqliteSampleStore::fileName;
    DayRecord noted = DayRecord::created(Date{763650000.987654321});
    noted.dayKey = "2025-03-14";
    noted.count = -7;
    noted.note = "fatigué, \"beaucoup\" codé";
    noted.validatedAt = Date{763699999.000001};
    noted.dayType = "vacances";
    noted.extraPersonal = 9007199254740993;
    const DayRecord defaults = DayRecord::created(Date{0.1});
    {
        SqliteSampleStore store(path);
        EXPECT_EQ(store.insertDayRecord(noted), "DayRecord/p1");
        store.insertDayRecord(defaults);
        EXPECT_EQ(SqliteSampleStore(path).fetchDayRecords().size(), 0u);  // another reader is not blocked
        store.save();
    }
    const auto records = SqliteSampleStore(path).fetchDayRecords();
    const auto fields = [](const DayRecord& r) {
        return std::tie(r.dayKey, r.count, r.updatedAt, r.note, r.validatedAt, r.dayType, r.extraPersonal);
    };
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(fields(records[0]), fields(noted));
    EXPECT_EQ(fields(records[1]), fields(defaults));
}

TEST(SqliteSampleStoreTest, ReadsAStoreInAFolderNobodyMayWriteTo) {
    if (::geteuid() == 0) GTEST_SKIP() << "this user writes into read-only folders";
    TempDir dir;
    const auto folder = dir.path() / "data";
    std::filesystem::create_directories(folder);
    {
        SqliteSampleStore store(folder / SqliteSampleStore::fileName);
        store.insert(slotSample("2025-03-14", "codex", Date{0}, 3));
        store.save();
    }
    std::filesystem::permissions(folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    SqliteSampleStore reader(folder / SqliteSampleStore::fileName, SqliteSampleStore::Access::readOnly);
    const auto samples = reader.fetchAll();
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples.front().requests, 3);
}

TEST(SqliteSampleStoreTest, FailuresCarrySqliteMessages) {
    TempDir dir;
    const auto message = [](const std::function<void()>& operation) -> std::string {
        try {
            operation();
        } catch (const StoreError& error) {
            return error.what();
        }
        return "no error";
    };
    SqliteSampleStore store(dir.path() / SqliteSampleStore::fileName);
    EXPECT_EQ(store.insert(slotSample("2025-03-14", "codex", Date{0})), "UsageSample/p1");
    for (const std::string bad : {"", "UsageSample/p", "UsageSample/p0", "UsageSample/p1x", "DayRecord/p1"})
        EXPECT_EQ(message([&] { store.remove(bad); }), "invalid UsageSample identifier: " + bad);
    EXPECT_EQ(message([&] { SqliteSampleStore(dir.path() / "missing" / "store.sqlite").count(); }),
              "unable to open database file");
    SqliteSampleStore junk(dir.write("junk.sqlite", std::string(2048, '\x7f')));
    EXPECT_EQ(message([&] { junk.fetchAll(); }), "file is not a database");
    EXPECT_EQ(message([&] { junk.fetchAll(); }), "file is not a database");
}

TEST(SqliteSampleStoreTest, ReadingAMissingStoreCreatesNothingAndAnUnreadableOneIsTheUsersLine) {
    TempDir dir;
    const auto missing = readStoredSamples(dir.path() / "store.sqlite");
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->empty());
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "store.sqlite"));
    EXPECT_EQ(readStoredSamples(dir.write("junk.sqlite", std::string(2048, 'z'))).error(),
              "Store illisible : file is not a database");
}

}  // namespace
}  // namespace tallowen::testing
