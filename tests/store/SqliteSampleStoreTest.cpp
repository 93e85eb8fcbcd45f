#include "store/SqliteSampleStore.hpp"

#include "store/SampleStoreConformance.hpp"
#include "support/Samples.hpp"

#include <unistd.h>

namespace tallowen::testing {
namespace {

std::unique_ptr<SampleStore> openSqlite(const std::filesystem::path& path, StoreAccess access) {
    return std::make_unique<SqliteSampleStore>(path, access);
}

INSTANTIATE_TEST_SUITE_P(Sqlite, SampleStoreConformance, ::testing::Values(SampleStoreFactory{"Sqlite", openSqlite}));

class SqliteSampleStoreTest : public ::testing::Test {
protected:
    TempDir dir;
    std::filesystem::path path = dir.path() / SqliteSampleStore::fileName;
};

TEST_F(SqliteSampleStoreTest, RoundTripsDayRecordsExactlyAndReadsOnlyTheDaysAskedFor) {
    const DayRecord noted{"2025-03-14", -7, Date{763650000.987654321}, "fatigué, \"beaucoup\" codé",
                          Date{763699999.000001}, "vacances", 9007199254740993, {}};
    const DayRecord defaults = DayRecord::created(Date{0.1});
    SqliteSampleStore store(path);
    EXPECT_EQ(store.insertDayRecord(noted), "DayRecord/p1");
    store.insertDayRecord(defaults);
    for (const auto& [day, updatedAt, quota] : {std::tuple{"2025-03-01", 500.0, true}, {"2025-03-02", 100.0, true},
                                                 {"2025-03-02", 600.0, false}, {"2025-03-04", 100.0, false}}) {
        UsageSample sample = slotSample(day, "codex", Date{updatedAt});
        if (quota) sample.quotaSecondaryPercent = 12.5;
        store.insert(sample);
    }
    EXPECT_EQ(SqliteSampleStore(path).fetchDayRecords().size(), 0u);  // another reader is not blocked
    store.save();
    const auto records = SqliteSampleStore(path).fetchDayRecords();
    const auto fields = [](const DayRecord& r) {
        return std::tie(r.dayKey, r.count, r.updatedAt, r.note, r.validatedAt, r.dayType, r.extraPersonal);
    };
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(fields(records[0]), fields(noted));
    EXPECT_EQ(fields(records[1]), fields(defaults));

    const auto days = [](const std::vector<UsageSample>& samples) {
        std::string keys;
        for (const UsageSample& sample : samples) keys += sample.dayKey.substr(8) + " ";
        return keys;
    };
    EXPECT_EQ(days(store.fetchDays("2025-03-02", "2025-03-03")), "02 02 ");
    EXPECT_EQ(days(store.fetchDays("2025-03-01", "2025-03-04")), "01 02 02 04 ");
    EXPECT_EQ(days(store.fetchFromDayOrQuotaSince("2025-03-03", Date{500})), "01 04 ");
}

TEST_F(SqliteSampleStoreTest, ReadsAStoreInAFolderNobodyMayWriteTo) {
    if (::geteuid() == 0) GTEST_SKIP() << "this user writes into read-only folders";
    SqliteSampleStore store(path);
    store.insert(slotSample("2025-03-14", "codex", Date{0}, 3));
    store.save();
    std::filesystem::permissions(dir.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const auto samples = SqliteSampleStore(path, SqliteSampleStore::Access::readOnly).fetchAll();
    std::filesystem::permissions(dir.path(), std::filesystem::perms::owner_all);
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples.front().requests, 3);
}

TEST_F(SqliteSampleStoreTest, AMalformedIdentifierIsRefusedAndReadingAMissingStoreCreatesNothing) {
    const auto missing = readStoredSamples(path);
    EXPECT_TRUE(missing && missing->empty());
    EXPECT_FALSE(std::filesystem::exists(path));
    SqliteSampleStore store(path);
    EXPECT_EQ(store.insert(slotSample("2025-03-14", "codex", Date{0})), "UsageSample/p1");
    for (const std::string bad : {"", "UsageSample/p", "UsageSample/p0", "UsageSample/p1x", "DayRecord/p1"})
        EXPECT_EQ(storeFailure([&] { store.remove(bad); }), "invalid UsageSample identifier: " + bad);
}

}  // namespace
}  // namespace tallowen::testing
