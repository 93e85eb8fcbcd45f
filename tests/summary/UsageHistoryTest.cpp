#include "summary/UsageHistory.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::SampleBuilder;

TEST(UsageHistoryTest, EveryDayOfTheRangeSplitByTheUsedToolsInTheirOrder) {
    UsageSample codex = SampleBuilder("2025-03-01", "codex").tokens(100, 20).cost(7).water(3);
    codex.requests = 4;
    UsageSample stale = SampleBuilder("2025-03-01", "codex").tokens(999).updatedAt(Date{-1});
    const std::vector<UsageSample> samples = {
        codex, stale, SampleBuilder("2025-03-03", "claude-code").tokens(50, 5),
        SampleBuilder("2025-03-03", "codex").tokens(1), SampleBuilder("2025-03-03", "mystery").tokens(1000),
        SampleBuilder("2025-03-04", "cursor").tokens(1000),  // outside the range
        SampleBuilder("2025-03-02", "cursor")};              // used no tokens
    const UsageHistory history =
        usageHistory(samples, {"2025-03-01", "2025-03-02", "2025-03-03"}, HistoryMetric::tokens);
    EXPECT_EQ(history.tools, (std::vector<UsageTool>{UsageTool::claudeCode, UsageTool::codex}));
    EXPECT_EQ(history.largestDayTotal, 120);
    EXPECT_EQ(usageHistoryJson(history),
              R"({"metric":"tokens","firstDay":"2025-03-01","lastDay":"2025-03-03","tools":[)"
              R"({"tool":"claude-code","label":"CLAUDE CODE","total":55},{"tool":"codex","label":"CODEX","total":121}],)"
              R"("days":[{"dayKey":"2025-03-01","total":120,"tools":{"claude-code":0,"codex":120}},)"
              R"({"dayKey":"2025-03-02","total":0,"tools":{"claude-code":0,"codex":0}},)"
              R"({"dayKey":"2025-03-03","total":56,"tools":{"claude-code":55,"codex":1}}]})");

    for (const auto& [metric, value] : {std::pair{HistoryMetric::requests, 4}, std::pair{HistoryMetric::water, 3},
                                        std::pair{HistoryMetric::cost, 7}}) {
        EXPECT_EQ(usageHistory(samples, {"2025-03-01"}, metric).days[0].total, value);
        EXPECT_EQ(historyMetricNamed(historyMetricName(metric)), metric);
    }
    EXPECT_FALSE(historyMetricNamed("Tokens"));
}

TEST(UsageHistoryTest, RangeFromTheOptionsAPersonGives) {
    testing::ScopedTimeZone paris("Europe/Paris");
    const Date now = testing::localDate(2025, 3, 31, 0, 30);  // the night after the clocks moved on
    const struct {
        std::optional<std::string> days, since, until;
        const char* first;
        const char* last;
        const char* error;
    } cases[] = {
        {{}, {}, {}, "2025-03-18", "2025-03-31", ""},
        {"1", {}, {}, "2025-03-31", "2025-03-31", ""},
        {"3", {}, "2024-03-01", "2024-02-28", "2024-03-01", ""},
        {{}, "2025-03-30", {}, "2025-03-30", "2025-03-31", ""},
        {{}, "2025-01-01", "2025-01-01", "2025-01-01", "2025-01-01", ""},
        {"0", {}, {}, "", "", "--days needs a whole number of days from 1 on, not 0"},
        {"2x", {}, {}, "", "", "--days needs a whole number of days from 1 on, not 2x"},
        {"7", "2025-03-01", {}, "", "", "--days and --since both set where the range begins: give one"},
        {{}, "2025-02-29", {}, "", "", "--since needs a day written YYYY-MM-DD, not 2025-02-29"},
        {{}, {}, "2025-3-01", "", "", "--until needs a day written YYYY-MM-DD, not 2025-3-01"},
        {{}, "2025-04-01", {}, "", "", "--since 2025-04-01 comes after --until 2025-03-31"},
    };
    for (const auto& c : cases) {
        std::string error;
        const auto range = historyRange(c.days, c.since, c.until, now, LocalCalendar{}, error);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(range ? range->firstDayKey + " " + range->lastDayKey : "", *c.first ? std::string(c.first) + " " + c.last : "");
    }
}

TEST(UsageHistoryTest, DayKeysStepOneCalendarDayAcrossClockChanges) {
    testing::ScopedTimeZone paris("Europe/Paris");
    EXPECT_EQ(dayKeysFromTo("2025-03-29", "2025-04-01", LocalCalendar{}),
              (std::vector<std::string>{"2025-03-29", "2025-03-30", "2025-03-31", "2025-04-01"}));
    EXPECT_TRUE(dayKeysFromTo("2025-01-02", "2025-01-01", LocalCalendar{}).empty());
    EXPECT_TRUE(dayKeysFromTo("nonsense", "2025-01-01", LocalCalendar{}).empty());
}

}  // namespace
}  // namespace tallowen
