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
using testing::ScopedTimeZone;

constexpr int window = 30;

class ConsumptionSummaryTest : public ::testing::Test {
protected:
    ScopedTimeZone zone_{"Europe/Paris"};
    LocalCalendar calendar_;

    ConsumptionSummary summarize(const std::vector<UsageSample>& samples, Date now) const {
        return computeConsumptionSummary(samples, window, now, calendar_);
    }
};

void expectStartingValues(const ConsumptionSummary& summary) {
    EXPECT_EQ(summary.totalTokens, 0);
    EXPECT_EQ(summary.totalCostCents, 0);
    EXPECT_EQ(summary.measuredDays, 0);
    EXPECT_EQ(summary.totalWaterMilliliters, 0);
    EXPECT_EQ(summary.allTimeWaterMilliliters, 0);
    EXPECT_FALSE(summary.reliableSince);
    EXPECT_EQ(summary.todayWaterMilliliters, 0);
    EXPECT_EQ(summary.previousWindowWaterMilliliters, 0);
    EXPECT_EQ(summary.dayReferenceMilliliters, 0);
    EXPECT_TRUE(summary.quotas.empty());
    EXPECT_FALSE(summary.hasClaudeCodeWithoutQuota);
}

TEST_F(ConsumptionSummaryTest, OnlyComputerSideToolsCount) {
    const Date now = localDate(2026, 3, 10, 12);
    const struct {
        const char* name;
        std::vector<UsageSample> samples;
    } cases[] = {
        {"no samples", {}},
        {"phone tools only",
         {SampleBuilder("2026-03-10", "phone-chatgpt").tokens(100).water(50).primaryQuota(10).updatedAt(now),
          SampleBuilder("2026-03-10", "phone-screentime").tokens(5).water(5)}},
        {"unknown or differently written tools",
         {SampleBuilder("2026-03-10", "Claude-Code").tokens(100).water(50),
          SampleBuilder("2026-03-10", "").tokens(1).water(1)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ConsumptionSummary summary = summarize(c.samples, now);
        EXPECT_FALSE(summary.hasMacData);
        expectStartingValues(summary);
        EXPECT_EQ(bottleLevel(summary), BottleLevel::empty);
        EXPECT_EQ(waterComparisonLine(summary), "PREMIERS JOURS MESURÉS");
    }

    const ConsumptionSummary mixed =
        summarize({SampleBuilder("2026-03-10", "phone-claude").tokens(100).water(50),
                   SampleBuilder("2026-03-10", "mac-perplexity").tokens(1).water(3)},
                  now);
    EXPECT_TRUE(mixed.hasMacData);
    EXPECT_EQ(mixed.totalTokens, 1);
    EXPECT_EQ(mixed.todayWaterMilliliters, 3);
}

TEST_F(ConsumptionSummaryTest, DuplicatesOfADayAndToolCountOnceWithTheLaterUpdate) {
    const Date now = localDate(2026, 3, 10, 12);
    const ConsumptionSummary summary = summarize(
        {
            SampleBuilder("2026-03-10", "codex").tokens(1000, 1000).cost(500).water(400).updatedAt(now.addingSeconds(-60)),
            SampleBuilder("2026-03-10", "codex").tokens(10, 5).cost(7).water(3).updatedAt(now),
            SampleBuilder("2026-03-09", "codex").tokens(4, 0).cost(1).water(2).updatedAt(now),
            SampleBuilder("2026-03-09", "codex").tokens(40, 0).cost(10).water(20).updatedAt(now.addingSeconds(-1)),
        },
        now);
    EXPECT_EQ(summary.totalTokens, 19);
    EXPECT_EQ(summary.totalCostCents, 8);
    EXPECT_EQ(summary.totalWaterMilliliters, 5);
    EXPECT_EQ(summary.todayWaterMilliliters, 3);
    EXPECT_EQ(summary.allTimeWaterMilliliters, 5);
    EXPECT_EQ(summary.dayReferenceMilliliters, 2);
    EXPECT_EQ(summary.measuredDays, 2);
}

TEST_F(ConsumptionSummaryTest, WindowStartsTwentyNineDaysBeforeTodayAndHasNoUpperBound) {
    // Today is 31 March: the window opens on 2 March, the previous one on 31 January.
    const Date now = localDate(2026, 3, 31, 12);
    const ConsumptionSummary summary = summarize(
        {
            SampleBuilder("2026-01-30", "codex").tokens(1).water(1),
            SampleBuilder("2026-01-31", "codex").tokens(1).water(10),
            SampleBuilder("2026-03-01", "codex").tokens(1).water(100),
            SampleBuilder("2026-03-02", "codex").tokens(2).cost(3).water(1000),
            SampleBuilder("2026-03-15", "cursor").tokens(0).cost(5).water(7),
            SampleBuilder("2026-03-31", "mac-claude").tokens(3, 4).cost(11).water(20000),
            SampleBuilder("2026-04-05", "claude-code").tokens(5).cost(13).water(300000),
        },
        now);
    EXPECT_EQ(summary.totalTokens, 14);
    EXPECT_EQ(summary.totalCostCents, 32);
    EXPECT_EQ(summary.totalWaterMilliliters, 321007);
    // 15 March has water but no token.
    EXPECT_EQ(summary.measuredDays, 3);
    EXPECT_EQ(summary.todayWaterMilliliters, 20000);
    EXPECT_EQ(summary.previousWindowWaterMilliliters, 110);
    // (321007 - 20000) over 2 March, 15 March and 5 April: today is left out.
    EXPECT_EQ(summary.dayReferenceMilliliters, 100335);
    // All active days lie within thirty days of each other.
    EXPECT_EQ(summary.reliableSince, localDate(2026, 1, 30));
    EXPECT_EQ(summary.allTimeWaterMilliliters, 321118);

    const ConsumptionSummary oneDay =
        computeConsumptionSummary({SampleBuilder("2026-03-30", "codex").tokens(1).water(5),
                                   SampleBuilder("2026-03-31", "codex").tokens(1).water(7),
                                   SampleBuilder("2026-03-29", "codex").tokens(1).water(11)},
                                  1, now, calendar_);
    EXPECT_EQ(oneDay.totalWaterMilliliters, 7);
    EXPECT_EQ(oneDay.previousWindowWaterMilliliters, 5);
}

TEST_F(ConsumptionSummaryTest, ReferenceExcludesTodayAndPicksTheLevelAndLine) {
    const Date now = localDate(2026, 3, 10, 12);
    const struct {
        const char* name;
        std::vector<UsageSample> samples;
        int64_t reference;
        BottleLevel level;
        const char* line;
    } cases[] = {
        {"today only", {SampleBuilder("2026-03-10", "codex").tokens(5).water(30)}, 0, BottleLevel::medium,
         "PREMIERS JOURS MESURÉS"},
        {"40 ml over three past days, none today",
         {SampleBuilder("2026-03-07", "codex").tokens(1).water(10),
          SampleBuilder("2026-03-08", "codex").tokens(1).water(10),
          SampleBuilder("2026-03-09", "cursor").tokens(1).water(20),
          SampleBuilder("2026-03-10", "codex").tokens(1).water(0)},
         13, BottleLevel::empty, "RIEN AUJOURD'HUI"},
        {"below half", {SampleBuilder("2026-03-09", "codex").water(20), SampleBuilder("2026-03-10", "codex").water(9)},
         20, BottleLevel::low, "SOUS TA MOYENNE"},
        {"half", {SampleBuilder("2026-03-09", "codex").water(20), SampleBuilder("2026-03-10", "codex").water(10)}, 20,
         BottleLevel::medium, "DANS TA MOYENNE"},
        {"one and a half", {SampleBuilder("2026-03-09", "codex").water(20), SampleBuilder("2026-03-10", "codex").water(30)},
         20, BottleLevel::full, "AU-DESSUS DE TA MOYENNE"},
        {"triple", {SampleBuilder("2026-03-09", "codex").water(20), SampleBuilder("2026-03-10", "codex").water(60)}, 20,
         BottleLevel::overflow, "LE TRIPLE DE TA MOYENNE"},
        {"past days without water do not divide",
         {SampleBuilder("2026-03-08", "codex").tokens(9).water(0), SampleBuilder("2026-03-09", "codex").water(20),
          SampleBuilder("2026-03-10", "codex").water(20)},
         20, BottleLevel::medium, "DANS TA MOYENNE"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ConsumptionSummary summary = summarize(c.samples, now);
        EXPECT_EQ(summary.dayReferenceMilliliters, c.reference);
        EXPECT_EQ(bottleLevel(summary), c.level);
        EXPECT_EQ(waterComparisonLine(summary), c.line);
    }
    EXPECT_EQ(summarize(cases[0].samples, now).measuredDays, 1);
}

TEST_F(ConsumptionSummaryTest, ReliableStartIsTheUnbrokenStretchOfMeasuredDays) {
    const struct {
        const char* name;
        std::vector<const char*> activeDays;
        const char* expectedStart;
    } cases[] = {
        {"31 days apart breaks", {"2026-03-01", "2026-03-31", "2026-05-10"}, "2026-05-10"},
        {"29 then 30 days apart holds", {"2026-03-01", "2026-03-30", "2026-04-29"}, "2026-03-01"},
        {"one day", {"2026-02-01"}, "2026-02-01"},
        // Paris gains an hour in spring: 30 calendar days are 30 × 86400 − 3600 s.
        {"30 days across the spring change hold", {"2026-03-10", "2026-04-09"}, "2026-03-10"},
        // ... and loses it in autumn: 30 × 86400 + 3600 s break the stretch.
        {"30 days across the autumn change break", {"2026-10-10", "2026-11-09"}, "2026-11-09"},
        {"a key that is no date stops the walk", {"2026-01-01", "2026-01-02x", "2026-01-03"}, "2026-01-03"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<UsageSample> samples;
        for (const char* day : c.activeDays) samples.push_back(SampleBuilder(day, "codex").tokens(0, 1).water(1));
        // Water of a day without tokens before the start is not counted; after it, it is.
        samples.push_back(SampleBuilder("2000-01-01", "codex").water(1000));
        samples.push_back(SampleBuilder("2099-01-01", "cursor").water(1000));
        const ConsumptionSummary summary = summarize(samples, localDate(2026, 12, 1));
        EXPECT_EQ(summary.reliableSince, dateOfDayKey(c.expectedStart, calendar_));
        int64_t expectedWater = 1000;
        for (const char* day : c.activeDays)
            if (std::string(day) >= c.expectedStart) expectedWater += 1;
        EXPECT_EQ(summary.allTimeWaterMilliliters, expectedWater);
    }

    const ConsumptionSummary noTokens = summarize({SampleBuilder("2026-03-01", "codex").water(40)}, localDate(2026, 3, 2));
    EXPECT_FALSE(noTokens.reliableSince);
    EXPECT_EQ(noTokens.allTimeWaterMilliliters, 0);
    EXPECT_EQ(noTokens.totalWaterMilliliters, 40);
}

TEST_F(ConsumptionSummaryTest, QuotasKeepEachToolsLatestFreshFiguresSortedByLabel) {
    const Date now = localDate(2026, 3, 10, 12);
    const double eightDays = 691200;
    const ConsumptionSummary summary = summarize(
        {
            SampleBuilder("2026-03-02", "claude-code").primaryQuota(40).updatedAt(now.addingSeconds(-eightDays)).id("cc"),
            SampleBuilder("2026-03-02", "codex").primaryQuota(50).updatedAt(now.addingSeconds(-eightDays - 1)),
            SampleBuilder("2026-03-09", "mac-chatgpt").secondaryQuota(1).updatedAt(now.addingSeconds(-10)).id("old"),
            SampleBuilder("2026-03-10", "mac-chatgpt").secondaryQuota(2).updatedAt(now.addingSeconds(-5)).id("first"),
            SampleBuilder("2026-03-08", "mac-chatgpt").primaryQuota(3).updatedAt(now.addingSeconds(-5)).id("tie"),
            // Newer, but without figures: it does not replace the quota sample.
            SampleBuilder("2026-03-10", "claude-code").tokens(5).updatedAt(now),
            SampleBuilder("2026-03-10", "phone-gemini").primaryQuota(90).updatedAt(now),
        },
        now);
    ASSERT_EQ(summary.quotas.size(), 2u);
    EXPECT_EQ(summary.quotas[0].tool, UsageTool::macChatGPT);
    EXPECT_EQ(summary.quotas[0].sample.persistentId, "first");
    EXPECT_EQ(summary.quotas[1].tool, UsageTool::claudeCode);
    EXPECT_EQ(summary.quotas[1].sample.persistentId, "cc");
    EXPECT_FALSE(summary.hasClaudeCodeWithoutQuota);
}

TEST_F(ConsumptionSummaryTest, ClaudeCodeWithoutQuota) {
    const Date now = localDate(2026, 3, 10, 12);
    const struct {
        const char* name;
        std::vector<UsageSample> samples;
        bool expected;
    } cases[] = {
        {"samples without figures", {SampleBuilder("2026-03-10", "claude-code").tokens(5)}, true},
        {"a fresh quota sample",
         {SampleBuilder("2026-03-10", "claude-code").tokens(5),
          SampleBuilder("2026-03-09", "claude-code").primaryQuota(12).updatedAt(now.addingSeconds(-3600))},
         false},
        {"only a stale quota sample",
         {SampleBuilder("2026-03-01", "claude-code").primaryQuota(12).updatedAt(now.addingSeconds(-691201))}, true},
        {"no Claude Code at all", {SampleBuilder("2026-03-10", "codex").tokens(5)}, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(summarize(c.samples, now).hasClaudeCodeWithoutQuota, c.expected) << c.name;
    }
}

}  // namespace
}  // namespace tallowen
