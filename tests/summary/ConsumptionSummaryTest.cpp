#include "model/DayKey.hpp"
#include "summary/BottleLevel.hpp"
#include "summary/ConsumptionSummary.hpp"
#include "summary/DaySelection.hpp"
#include "summary/OneSamplePerSlot.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/Samples.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

using testing::localDate;
using testing::SampleBuilder;
using testing::slotSample;

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

TEST_F(ConsumptionSummaryTest, WindowStartsTwentyNineDaysBeforeTodayAndHasNoUpperBound) {
    // Today is 31 March: the window opens on 2 March, the previous one on 31 January.
    // Of the two samples of today's Claude, only the one updated later counts.
    const Date now = localDate(2026, 3, 31, 12);
    const ConsumptionSummary s = summarize(
        {SampleBuilder("2026-03-31", "mac-claude").tokens(1000, 1000).cost(500).water(400).updatedAt(Date{-1}),
         used("2026-01-30", "codex", 1, 1), used("2026-01-31", "codex", 1, 10), used("2026-03-01", "codex", 1, 100),
         used("2026-03-02", "codex", 2, 1000, 3), used("2026-03-15", "cursor", 0, 7, 5),
         used("2026-03-31", "mac-claude", 7, 20000, 11), used("2026-04-05", "claude-code", 5, 300000, 13),
         // Only the computer's own tools count: not the phone's, a miswritten one or none.
         SampleBuilder("2026-03-31", "phone-chatgpt").tokens(100).water(50).primaryQuota(10).updatedAt(now),
         used("2026-03-31", "Claude-Code", 100, 50), used("2026-03-31", "", 1, 1)},
        now);
    // 15 March has water but no token, so three measured days. The usual day is
    // (321007 - 20000) over 2 March, 15 March and 5 April: today is left out.
    EXPECT_EQ((std::vector<int64_t>{s.totalTokens, s.totalCostCents, s.totalWaterMilliliters, s.measuredDays,
                                    s.todayWaterMilliliters, s.previousWindowWaterMilliliters,
                                    s.dayReferenceMilliliters, s.allTimeWaterMilliliters}),
              (std::vector<int64_t>{14, 32, 321007, 3, 20000, 110, 100335, 321118}));
    EXPECT_TRUE(s.hasMacData && s.quotas.empty());
    EXPECT_FALSE(summarize({}).hasMacData);
}

TEST_F(ConsumptionSummaryTest, ReferenceIsThePastDaysWithWaterAndPicksTheLine) {
    const std::tuple<std::vector<UsageSample>, int64_t, const char*> cases[] = {
        {{used("2026-03-10", "codex", 5, 30)}, 0, "PREMIERS JOURS MESURÉS"},
        {{used("2026-03-07", "codex", 1, 10), used("2026-03-08", "codex", 1, 10), used("2026-03-09", "cursor", 1, 20),
          used("2026-03-10", "codex", 1, 0)},
         13, "RIEN AUJOURD'HUI"},
        // A day with tokens but no water is no usual day: 9 ml today against 20 is under half.
        {{used("2026-03-08", "codex", 9, 0), used("2026-03-09", "codex", 0, 20), used("2026-03-10", "codex", 0, 9)}, 20,
         "SOUS TA MOYENNE"},
    };
    for (const auto& [samples, reference, line] : cases) {
        const ConsumptionSummary summary = summarize(samples);
        EXPECT_EQ(summary.dayReferenceMilliliters, reference) << line;
        EXPECT_EQ(waterComparisonLine(summary), line);
    }
}

TEST_F(ConsumptionSummaryTest, ReliableStartIsTheUnbrokenStretchOfMeasuredDays) {
    // Days with tokens, the reliable start, and the water of all time: a day without tokens counts from the start
    // on, not before it.
    const std::tuple<std::vector<const char*>, std::optional<std::string>, int64_t> cases[] = {
        {{"2026-03-01", "2026-03-31", "2026-05-10"}, "2026-05-10", 1001},
        {{"2026-03-01", "2026-03-30", "2026-04-29"}, "2026-03-01", 1003},
        // Paris skips an hour in spring: 30 calendar days are 30 × 86400 − 3600 s and hold ...
        {{"2026-03-10", "2026-04-09"}, "2026-03-10", 1002},
        // ... and repeats one in autumn: 30 × 86400 + 3600 s break the stretch.
        {{"2026-10-10", "2026-11-09"}, "2026-11-09", 1001},
        {{"2026-01-01", "2026-01-02x", "2026-01-03"}, "2026-01-03", 1001},
        {{}, std::nullopt, 0},
    };
    for (const auto& [activeDays, expectedStart, expectedWater] : cases) {
        std::vector<UsageSample> samples = {used("2000-01-01", "codex", 0, 1000), used("2099-01-01", "cursor", 0, 1000)};
        for (const char* day : activeDays) samples.push_back(used(day, "codex", 1, 1));
        const ConsumptionSummary summary = summarize(samples);
        const std::optional<Date> start = expectedStart ? dateOfDayKey(*expectedStart, calendar_) : std::nullopt;
        EXPECT_EQ(summary.reliableSince, start) << expectedStart.value_or("none");
        EXPECT_EQ(summary.allTimeWaterMilliliters, expectedWater) << expectedStart.value_or("none");
    }
}

TEST_F(ConsumptionSummaryTest, QuotasKeepEachToolsLatestFiguresSortedByLabel) {
    const ConsumptionSummary summary = summarize({
        SampleBuilder("2026-03-02", "claude-code").primaryQuota(40).updatedAt(now_.addingSeconds(-100)).id("cc"),
        SampleBuilder("2026-03-09", "mac-chatgpt").secondaryQuota(1).updatedAt(now_.addingSeconds(-10)),
        // Written by one import: on equal `updatedAt` the newest day's reading wins.
        SampleBuilder("2026-03-08", "mac-chatgpt").primaryQuota(3).updatedAt(now_.addingSeconds(-5)),
        SampleBuilder("2026-03-10", "mac-chatgpt").secondaryQuota(2).updatedAt(now_.addingSeconds(-5)).id("first"),
        SampleBuilder("2026-03-10", "claude-code").tokens(5).updatedAt(now_),  // later, but without a quota
    });
    std::vector<std::string> kept;
    for (const ToolQuota& quota : summary.quotas) kept.push_back(quota.sample.persistentId);
    EXPECT_EQ(kept, (std::vector<std::string>{"first", "cc"}));

    const std::pair<UsageSample, bool> claudeCode[] = {
        {used("2026-03-10", "claude-code", 5, 0), true},
        {SampleBuilder("2026-03-09", "claude-code").primaryQuota(12).updatedAt(now_.addingSeconds(-3600)), false},
        {SampleBuilder("2026-03-01", "claude-code").primaryQuota(12).updatedAt(now_.addingSeconds(-691201)), true},
        {used("2026-03-10", "codex", 5, 0), false},
    };
    for (const auto& [sample, withoutQuota] : claudeCode)
        EXPECT_EQ(summarize({sample}).hasClaudeCodeWithoutQuota, withoutQuota) << sample.dayKey;
}

UsageSample sample(const char* day, const char* tool, double updatedAt, const char* id) {
    return SampleBuilder(day, tool).updatedAt(Date{updatedAt}).id(id);
}

TEST(OneSamplePerSlotTest, KeepsTheLaterUpdateThenTheFirstIdentifierTextInAnyOrder) {
    const std::tuple<const char*, std::vector<UsageSample>, std::vector<std::string>> cases[] = {
        {"later update wins", {sample("2025-03-14", "codex", 10, "a"), sample("2025-03-14", "codex", 11, "b")}, {"b"}},
        {"tie: identifier text sorting first, by code points",
         {sample("2025-03-14", "codex", 10, "x-10"), sample("2025-03-14", "codex", 10, "x-9"),
          sample("2025-03-14", "codex", 10, "X-99")},
         {"X-99"}},
        {"slots are day and tool, unknown tools included, sorted by day then tool",
         {sample("2025-03-15", "codex", 1, "1"), sample("2025-03-14", "phone-new-tool", 1, "2"),
          sample("2025-03-14", "codex", 1, "3"), sample("2025-03-14", "claude-code", 1, "4")},
         {"4", "3", "2", "1"}},
        {"day and tool stay apart even where their joined texts would meet",
         {sample("d", "codex", 1, "1"), sample("d|codex", "", 1, "2"), sample("d", "|codex", 1, "3")},
         {"1", "3", "2"}},
    };
    for (auto [name, samples, kept] : cases) {
        SCOPED_TRACE(name);
        for (const bool reversed : {false, true}) {
            if (reversed) std::reverse(samples.begin(), samples.end());
            std::vector<std::string> ids;
            for (const auto& s : oneSamplePerSlot(samples)) ids.push_back(s.persistentId);
            EXPECT_EQ(ids, kept);
        }
    }
    // An identical identifier keeps the sample held.
    std::vector<UsageSample> twins = {sample("2025-03-14", "codex", 10, "a"), sample("2025-03-14", "codex", 10, "a")};
    twins[1].requests = 2;
    const auto held = oneSamplePerSlot(twins);
    EXPECT_TRUE(held.size() == 1 && held[0].requests == 0);
}

TEST(DaySelectionTest, OneSamplePerSlotThenTheSelectedDaysAndTool) {
    const std::vector<UsageSample> stored = {
        slotSample("2025-03-01", "phone-newtool", Date{5}, 1), slotSample("2025-03-02", "codex", Date{5}, 2),
        slotSample("2025-03-02", "codex", Date{9}, 3),         slotSample("2025-03-03", "claude-code", Date{5}, 4),
        slotSample("2025-03-04", "codex", Date{5}, 5),
    };
    const std::pair<DaySelection, std::vector<int64_t>> cases[] = {
        {{}, {1, 3, 4, 5}},       {{"2025-03-02", "2025-03-03", {}}, {3, 4}}, {{{}, {}, "codex"}, {3, 5}},
        {{"2025-03-04", {}, "codex"}, {5}}, {{{}, {}, "phone-newtool"}, {1}},     {{{}, {}, "claude"}, {}},
    };
    for (const auto& [selection, expected] : cases) {
        std::vector<int64_t> requests;
        for (const UsageSample& sample : selectedDays(stored, selection)) requests.push_back(sample.requests);
        EXPECT_EQ(requests, expected) << selection.since.value_or("") << selection.tool.value_or("");
    }
}

}  // namespace
}  // namespace tallowen
