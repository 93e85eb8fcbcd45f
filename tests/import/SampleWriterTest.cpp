#include "import/SampleWriter.hpp"

#include "store/SqliteSampleStore.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <array>

namespace tallowen {
namespace {

using testing::slotSample;
using testing::storedFields;
using testing::withId;

constexpr Date stamped{763650000};
constexpr Date now{763660000};

DayUsage dayUsage(int64_t requests, std::optional<QuotaSnapshot> quota = {}) {
    return DayUsage{{"a#0", "b#0"}, requests, 100, 10, {9, 14}, 5, 2, std::move(quota)};
}

// A stored sample holding exactly what `dayUsage(requests)` gives, with a whole quota when asked.
UsageSample storedDay(std::string dayKey, std::string tool, Date updatedAt, int64_t requests, bool quota = false) {
    if (!quota) return {dayKey, tool, 2, requests, 100, 10, {9, 14}, 5, 2, {}, {}, {}, {}, {}, updatedAt, {}};
    return {dayKey, tool, 2, requests, 100, 10, {9, 14}, 5, 2, 10.0, Date{1}, 20.0, Date{2}, "pro", updatedAt, {}};
}

TEST(SampleWriterTest, WritesOnlyChangedDaysAndKeepsOneSamplePerKey) {
    testing::TempDir dir;
    const auto path = dir.path() / SqliteSampleStore::fileName;
    SqliteSampleStore store(path);
    std::vector<UsageSample> phone;
    for (int day = 1; day <= 8; ++day) {  // UsageSample/p1 to p8
        phone.push_back(slotSample("2025-01-0" + std::to_string(day), "phone-gemini", stamped, day));
        phone.back().persistentId = store.insert(phone.back());
    }
    store.insert(storedDay("2025-03-15", "codex", stamped, 99));        // p9 loses to p10 by identifier text
    store.insert(storedDay("2025-03-15", "codex", stamped, 5));         // p10, unchanged
    store.insert(storedDay("2025-03-14", "codex", Date{1}, 4));         // p11 loses by age
    store.insert(storedDay("2025-03-14", "codex", stamped, 3));         // p12, updated
    store.insert(storedDay("2025-03-14", "cursor", stamped, 1, true));  // p13, quota rewritten
    store.insert(storedDay("2025-03-13", "cursor", stamped, 1, true));  // p14, quota kept
    store.save();
    const QuotaSnapshot primaryOnly{Date{3}, 50.0, Date{4}, {}, {}, {}};
    const ToolResults results = {
        {UsageTool::claudeCode, {{"2025-03-14", dayUsage(7)}}},
        {UsageTool::codex, {{"2025-03-14", dayUsage(4)}, {"2025-03-15", dayUsage(5)}}},
        {UsageTool::cursor, {{"2025-03-13", dayUsage(2)}, {"2025-03-14", dayUsage(1, primaryOnly)}}},
    };
    const auto outcome = writeSamples(store, results, now);
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ((std::array{outcome.inserted, outcome.updated, outcome.unchanged, outcome.duplicatesRemoved}),
              (std::array<int64_t, 4>{1, 3, 1, 2}));
    const auto samples = SqliteSampleStore(path).fetchAll();
    ASSERT_EQ(samples.size(), 13u);
    for (const auto& original : phone)
        EXPECT_EQ(storedFields(withId(samples, original.persistentId)), storedFields(original));
    EXPECT_EQ(withId(samples, "UsageSample/p10").updatedAt, stamped);
    EXPECT_EQ(std::tuple(withId(samples, "UsageSample/p12").requests, withId(samples, "UsageSample/p12").updatedAt),
              std::tuple(4, now));

    UsageSample rewritten = storedDay("2025-03-14", "cursor", now, 1);
    std::tie(rewritten.quotaPrimaryPercent, rewritten.quotaPrimaryResetAt) = std::tuple(50.0, Date{4});
    EXPECT_EQ(storedFields(withId(samples, "UsageSample/p13")), storedFields(rewritten));
    EXPECT_EQ(storedFields(withId(samples, "UsageSample/p14")),
              storedFields(storedDay("2025-03-13", "cursor", now, 2, true)));
    EXPECT_EQ(storedFields(withId(samples, "UsageSample/p15")),
              storedFields(storedDay("2025-03-14", "claude-code", now, 7)));
}

TEST(SampleWriterTest, ARefusedWriteIsTheErrorAndWritesNothing) {
    testing::TempDir dir;
    const ToolResults results = {{UsageTool::codex, {{"2025-03-14", dayUsage(4)}}}};
    const auto path = dir.path() / SqliteSampleStore::fileName;
    SqliteSampleStore(path).count();
    SqliteSampleStore readOnly(path, SqliteSampleStore::Access::readOnly);
    const auto unwritable = writeSamples(readOnly, results, now);
    EXPECT_EQ(std::tuple(unwritable.error, unwritable.inserted), std::tuple("attempt to write a readonly database", 0));
    EXPECT_EQ(SqliteSampleStore(path).count(), 0);
}

}  // namespace
}  // namespace tallowen
