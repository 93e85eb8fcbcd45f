#include "store/SqliteSampleStore.hpp"

#include "store/SampleStoreConformance.hpp"
#include "support/Samples.hpp"

#include <sys/stat.h>
#include <unistd.h>

namespace tallowen::testing {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Sqlite, SampleStoreConformance,
    ::testing::Values(SampleStoreFactory{
        "Sqlite",
        [](const std::filesystem::path& path) { return std::make_unique<SqliteSampleStore>(path); },
        [](const std::filesystem::path& path) {
            return std::make_unique<SqliteSampleStore>(path, SqliteSampleStore::Access::readOnly);
        }}),
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
        store.save();
    }
    const auto records = SqliteSampleStore(path).fetchDayRecords();
    ASSERT_EQ(records.size(), 2u);
    const auto fields = [](const DayRecord& r) {
        return std::tie(r.dayKey, r.count, r.updatedAt, r.note, r.validatedAt, r.dayType, r.extraPersonal);
    };
    EXPECT_EQ(fields(records[0]), fields(noted));
    EXPECT_EQ(fields(records[1]), fields(defaults));
    EXPECT_EQ(records[1].dayType, "normal");
}

TEST(SqliteSampleStoreTest, IdentifiersPrintAsTextAndBadOnesAreRefused) {
    TempDir dir;
    SqliteSampleStore store(dir.path() / SqliteSampleStore::fileName);
    EXPECT_EQ(store.insert(slotSample("2025-03-14", "codex", Date{0})), "UsageSample/p1");
    EXPECT_EQ(store.insert(slotSample("2025-03-14", "codex", Date{0})), "UsageSample/p2");
    for (const std::string bad : {"", "UsageSample/p", "UsageSample/p0", "UsageSample/p1x", "DayRecord/p1", "1"})
        EXPECT_THROW(store.remove(bad), StoreError) << bad;
    EXPECT_EQ(store.count(), 2);
}

TEST(SqliteSampleStoreTest, AnotherConnectionReadsTheSavedStateWhileOneWrites) {
    TempDir dir;
    const auto path = dir.path() / SqliteSampleStore::fileName;
    SqliteSampleStore writer(path);
    SqliteSampleStore reader(path);
    writer.insert(slotSample("2025-03-14", "codex", Date{0}));
    EXPECT_EQ(reader.count(), 0);
    writer.save();
    EXPECT_EQ(reader.count(), 1);
}

TEST(SqliteSampleStoreTest, FailuresCarrySqliteMessages) {
    TempDir dir;
    EXPECT_THROW(
        {
            try {
                SqliteSampleStore(dir.path() / "missing" / "store.sqlite").count();
            } catch (const StoreError& error) {
                EXPECT_STREQ(error.what(), "unable to open database file");
                throw;
            }
        },
        StoreError);
    dir.write("junk.sqlite", std::string(2048, '\x7f'));
    SqliteSampleStore junk(dir.path() / "junk.sqlite");
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            junk.fetchAll();
            ADD_FAILURE() << "no StoreError";
        } catch (const StoreError& error) {
            EXPECT_STREQ(error.what(), "file is not a database");
        }
    }
}

TEST(SqliteSampleStoreTest, AWriteProtectedFileIsReadButNotChanged) {
    TempDir dir;
    const auto path = dir.path() / SqliteSampleStore::fileName;
    {
        SqliteSampleStore store(path);
        store.insert(slotSample("2025-03-14", "codex", Date{0}));
        store.save();
    }
    ::chmod(path.c_str(), 0444);
    if (::access(path.c_str(), W_OK) == 0) GTEST_SKIP() << "file permissions do not bind this user";
    SqliteSampleStore store(path);
    EXPECT_EQ(store.count(), 1);
    EXPECT_THROW(store.insert(slotSample("2025-03-15", "codex", Date{0})), StoreError);
    EXPECT_EQ(store.count(), 1);
}

}  // namespace
}  // namespace tallowen::testing
