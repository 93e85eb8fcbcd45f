#include "model/DayKey.hpp"
#include "summary/BottleLevel.hpp"
#include "summary/ConsumptionSummary.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::SampleBuilder;

UsageSample used(const char* day, const char* tool, int64_t tokens, int64_t water, int64_t cost = 0) {
    return SampleBuilder(day, tool).tokens(tokens).water(water).cost(cost);
}

class ConsumptionSummaryTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone_{"Europe/Paris"};
    LocalCalendar calendar_;
    const Date now_ = localDate(2026, 3, 10, 12);

    ConsumptionSummary summarize(const std::vector<UsageSample>& samples, std::optional<Date> now = {}) const {
        return computeConsumptionSummary(samples, 30, now.value_or(now_), calendar_);
    }
};

TEST_F(ConsumptionSummaryTest, OnlyComputerSideToolsCount) {
    const ConsumptionSummary summary = summarize(
        {SampleBuilder("2026-03-10", "phone-chatgpt").tokens(100).water(50).primaryQuota(10).updatedAt(now_),
         used("2026-03-10", "Claude-Code", 100, 50), used("2026-03-10", "", 1, 1)});
    EXPECT_FALSE(summary.hasMacData);
    EXPECT_EQ(summary.totalTokens + summary.allTimeWaterMilliliters + summary.todayWaterMilliliters, 0);
    EXPECT_TRUE(summary.quotas.empty());
}

TEST_F(ConsumptionSummaryTest, WindowStartsTwentyNineDaysBeforeTodayAndHasNoUpperBound) {
    // Today is 31 March: the window opens on 2 March, the previous one on 31 January.
    // Of the two samples of today's Claude, only the one updated later counts.
    const ConsumptionSummary summary = summarize(
        {SampleBuilder("2026-03-31", "mac-claude").tokens(1000, 1000).cost(500).water(400).updatedAt(Date{-1}),
         used("2026-01-30", "codex", 1, 1), used("2026-01-31", "codex", 1, 10), used("2026-03-01", "codex", 1, 100),
         used("2026-03-02", "codex", 2, 1000, 3), used("2026-03-15", "cursor", 0, 7, 5),
         used("2026-03-31", "mac-claude", 7, 20000, 11), used("2026-04-05", "claude-code", 5, 300000, 13)},
        localDate(2026, 3, 31, 12));
    EXPECT_EQ(summary.totalTokens, 14);
    EXPECT_EQ(summary.totalCostCents, 32);
    EXPECT_EQ(summary.totalWaterMilliliters, 321007);
    EXPECT_EQ(summary.measuredDays, 3);  // 15 March has water but no token
    EXPECT_EQ(summary.todayWaterMilliliters, 20000);
    EXPECT_EQ(summary.previousWindowWaterMilliliters, 110);
    // (321007 - 20000) over 2 March, 15 March and 5 April: today is left out.
    EXPECT_EQ(summary.dayReferenceMilliliters, 100335);
    EXPECT_EQ(summary.reliableSince, localDate(2026, 1, 30));
    EXPECT_EQ(summary.allTimeWaterMilliliters, 321118);
}

TEST_F(ConsumptionSummaryTest, ReferenceExcludesTodayAndPicksTheLevelAndLine) {
    const struct {
        std::vector<UsageSample> samples;
        int64_t reference;
        BottleLevel level;
        const char* line;
    } cases[] = {
        {{used("2026-03-10", "codex", 5, 30)}, 0, BottleLevel::medium, "PREMIERS JOURS MESURÉS"},
        {{used("2026-03-07", "codex", 1, 10), used("2026-03-08", "codex", 1, 10), used("2026-03-09", "cursor", 1, 20),
          used("2026-03-10", "codex", 1, 0)},
         13, BottleLevel::empty, "RIEN AUJOURD'HUI"},
        {{used("2026-03-09", "codex", 0, 20), used("2026-03-10", "codex", 0, 9)}, 20, BottleLevel::low, "SOUS TA MOYENNE"},
        {{used("2026-03-08", "codex", 9, 0), used("2026-03-09", "codex", 0, 20), used("2026-03-10", "codex", 0, 10)}, 20,
         BottleLevel::medium, "DANS TA MOYENNE"},
        {{used("2026-03-09", "codex", 0, 20), used("2026-03-10", "codex", 0, 30)}, 20, BottleLevel::full,
         "AU-DESSUS DE TA MOYENNE"},
        {{used("2026-03-09", "codex", 0, 20), used("2026-03-10", "codex", 0, 60)}, 20, BottleLevel::overflow,
         "LE TRIPLE DE TA MOYENNE"},
    };
    for (const auto& c : cases) {
        const ConsumptionSummary summary = summarize(c.samples);
        EXPECT_EQ(summary.dayReferenceMilliliters, c.reference) << c.line;
        EXPECT_EQ(bottleLevel(summary), c.level) << c.line;
        EXPECT_EQ(waterComparisonLine(summary), c.line);
    }
}

TEST_F(ConsumptionSummaryTest, ReliableStartIsTheUnbrokenStretchOfMeasuredDays) {
    const struct {
        std::vector<const char*> activeDays;
        const char* expectedStart;
    } cases[] = {
        {{"2026-03-01", "2026-03-31", "2026-05-10"}, "2026-05-10"},
        {{"2026-03-01", "2026-03-30", "2026-04-29"}, "2026-03-01"},
        // Paris skips an hour in spring: 30 calendar days are 30 × 86400 − 3600 s and hold ...
        {{"2026-03-10", "2026-04-09"}, "2026-03-10"},
        // ... and repeats one in autumn: 30 × 86400 + 3600 s break the stretch.
        {{"2026-10-10", "2026-11-09"}, "2026-11-09"},
        {{"2026-01-01", "2026-01-02x", "2026-01-03"}, "2026-01-03"},
    };
    for (const auto& c : cases) {
        // Water of days without tokens counts from the start on, not before it.
        std::vector<UsageSample> samples = {used("2000-01-01", "codex", 0, 1000), used("2099-01-01", "cursor", 0, 1000)};
        int64_t expectedWater = 1000;
        for (const char* day : c.activeDays) {
            samples.push_back(used(day, "codex", 1, 1));
            if (std::string(day) >= c.expectedStart) expectedWater += 1;
        }
        const ConsumptionSummary summary = summarize(samples);
        EXPECT_EQ(summary.reliableSince, dateOfDayKey(c.expectedStart, calendar_)) << c.expectedStart;
        EXPECT_EQ(summary.allTimeWaterMilliliters, expectedWater) << c.expectedStart;
    }
    const ConsumptionSummary noTokens = summarize({used("2026-03-01", "codex", 0, 40)});
    EXPECT_FALSE(noTokens.reliableSince);
    EXPECT_EQ(noTokens.allTimeWaterMilliliters, 0);
}

TEST_F(ConsumptionSummaryTest, QuotasKeepEachToolsLatestFigures) {
    const double eightDays = 691200;
    const ConsumptionSummary summary = summarize({
        SampleBuilder("2026-03-02", "claude-code").primaryQuota(40).updatedAt(now_.addingSeconds(-eightDays)).id("cc"),
        SampleBuilder("2026-03-02", "codex").primaryQuota(50).updatedAt(now_.addingSeconds(-eightDays - 1)),
        SampleBuilder("2026-03-09", "mac-chatgpt").secondaryQuota(1).updatedAt(now_.addingSeconds(-10)),
        // Written by one import: on equal `updatedAt` the newest day's reading wins.
        SampleBuilder("2026-03-08", "mac-chatgpt").primaryQuota(3).updatedAt(now_.addingSeconds(-5)),
        SampleBuilder("2026-03-10", "mac-chatgpt").secondaryQuota(2).updatedAt(now_.addingSeconds(-5)).id("first"),
        SampleBuilder("2026-03-10", "claude-code").tokens(5).updatedAt(now_),
    });
    // Sorted by label: CHATGPT before CLAUDE CODE.
    ASSERT_EQ(summary.quotas.size(), 2u);
    EXPECT_EQ(summary.quotas[0].tool, UsageTool::macChatGPT);
    EXPECT_EQ(summary.quotas[0].sample.persistentId, "first");
    EXPECT_EQ(summary.quotas[1].sample.persistentId, "cc");

    const struct {
        std::vector<UsageSample> samples;
        bool withoutQuota;
    } claudeCode[] = {
        {{used("2026-03-10", "claude-code", 5, 0)}, true},
        {{SampleBuilder("2026-03-09", "claude-code").primaryQuota(12).updatedAt(now_.addingSeconds(-3600))}, false},
        {{SampleBuilder("2026-03-01", "claude-code").primaryQuota(12).updatedAt(now_.addingSeconds(-eightDays - 1))}, true},
        {{used("2026-03-10", "codex", 5, 0)}, false},
    };
    for (const auto& c : claudeCode) EXPECT_EQ(summarize(c.samples).hasClaudeCodeWithoutQuota, c.withoutQuota);
}

}  // namespace
}  // namespace tallowen
