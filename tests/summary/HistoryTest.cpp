#include "IcuLocaleFormatter.hpp"
#include "summary/UsageHistory.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/HistoryChart.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using testing::SampleBuilder;
using Cells = std::vector<HistoryBarCell>;

TEST(UsageHistoryTest, EveryDayOfTheRangeSplitByTheUsedToolsInTheirOrder) {
    const UsageSample codex = SampleBuilder("2025-03-01", "codex").requests(4).tokens(100, 20).cost(7).water(3);
    UsageSample stale = SampleBuilder("2025-03-01", "codex").tokens(999).updatedAt(Date{-1});
    const std::vector<UsageSample> samples = {
        codex, stale, SampleBuilder("2025-03-03", "claude-code").tokens(50, 5),
        SampleBuilder("2025-03-03", "codex").tokens(1), SampleBuilder("2025-03-03", "mystery").tokens(1000),
        SampleBuilder("2025-03-04", "cursor").tokens(1000),  // outside the range
        SampleBuilder("2025-03-02", "cursor")};              // used no tokens
    const UsageHistory history =
        usageHistory(samples, {"2025-03-01", "2025-03-02", "2025-03-03"}, HistoryMetric::tokens);
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
    using Option = std::optional<std::string>;
    // The first and last day of the range, or the reason there is none.
    const std::tuple<Option, Option, Option, const char*> cases[] = {
        {{}, {}, {}, "2025-03-18 2025-03-31"},                 {"1", {}, {}, "2025-03-31 2025-03-31"},
        {"3", {}, "2024-03-01", "2024-02-28 2024-03-01"},      {{}, "2025-03-30", {}, "2025-03-30 2025-03-31"},
        {{}, "2025-01-01", "2025-01-01", "2025-01-01 2025-01-01"},
        {"0", {}, {}, "--days needs a whole number of days from 1 on, not 0"},
        {"2x", {}, {}, "--days needs a whole number of days from 1 on, not 2x"},
        {"7", "2025-03-01", {}, "--days and --since both set where the range begins: give one"},
        {{}, "2025-02-29", {}, "--since needs a day written YYYY-MM-DD, not 2025-02-29"},
        {{}, {}, "2025-3-01", "--until needs a day written YYYY-MM-DD, not 2025-3-01"},
        {{}, "2025-04-01", {}, "--since 2025-04-01 comes after --until 2025-03-31"},
    };
    for (const auto& [days, since, until, expected] : cases) {
        std::string error;
        const auto range = historyRange(days, since, until, now, LocalCalendar{}, error);
        EXPECT_EQ(range ? range->firstDayKey + " " + range->lastDayKey + error : error, expected);
    }
}

TEST(UsageHistoryTest, DayKeysStepOneCalendarDayAcrossClockChanges) {
    testing::ScopedTimeZone paris("Europe/Paris");
    EXPECT_EQ(dayKeysFromTo("2025-03-29", "2025-04-01", LocalCalendar{}),
              (std::vector<std::string>{"2025-03-29", "2025-03-30", "2025-03-31", "2025-04-01"}));
    EXPECT_TRUE(dayKeysFromTo("2025-01-02", "2025-01-01", LocalCalendar{}).empty());
    EXPECT_TRUE(dayKeysFromTo("nonsense", "2025-01-01", LocalCalendar{}).empty());
}

TEST(HistoryChartTest, BarsSplitByToolToTheNearestEighth) {
    constexpr int64_t huge = std::numeric_limits<int64_t>::max() / 2;
    const std::tuple<std::vector<int64_t>, int64_t, int, Cells> cases[] = {
        {{10}, 10, 2, {{0, 8, -1}, {0, 8, -1}}}, {{5}, 10, 2, {{0, 8, -1}}}, {{1}, 16, 2, {{0, 1, -1}}},
        {{4}, 0, 4, {}},                              // no scale: no bar
        {{1}, 40, 2, {}},                             // below half an eighth
        {{3, 13}, 16, 2, {{0, 3, 1}, {1, 8, -1}}},    // the first tool's end shares a cell with the second
        {{1, 1, 14}, 16, 2, {{0, 1, 2}, {2, 8, -1}}}, // a sliver between two tools does not show
        {{3, 2}, 16, 2, {{0, 5, -1}}},                // the bar ends inside a shared cell: full length
        {{2, 4}, 16, 2, {{1, 6, -1}}},                // in the colour that covers most of it
        {{1, 0, 15}, 16, 2, {{0, 1, 2}, {2, 8, -1}}}, // an unused tool takes no room
        {{-4, 8}, 8, 1, {{1, 8, -1}}},                // a negative figure counts as zero
        {{huge, huge}, huge * 2, 1, {{0, 4, 1}}},     // sums far beyond 64-bit products
    };
    for (const auto& [values, scale, columns, cells] : cases)
        EXPECT_EQ(historyBarCells(values, scale, columns), cells) << values.front();
}

TEST(HistoryChartTest, LaidOutForTheTerminalWidthWithGapsAndAWrappedLegend) {
    UsageHistory history;
    history.tools = {UsageTool::claudeCode, UsageTool::codex, UsageTool::cursor};
    history.toolTotals = {2500000, 1200, 800};
    history.days = {{"2025-03-01", {2500000, 0, 0}, 2500000}, {"2025-03-03", {0, 1200, 800}, 2000}};
    history.largestDayTotal = 2500000;
    const IcuLocaleFormatter french("fr_FR");

    // "■ CLAUDE CODE 2,5 M" is 19 columns, "■ CODEX 1 k" 11: 32 with the gap.
    const HistoryChart narrow = historyChart(history, 31, french);
    ASSERT_EQ(narrow.legendLines.size(), 2u);
    EXPECT_EQ(narrow.legendLines[1].size(), 2u);
    EXPECT_EQ(historyChart(history, 32, french).legendLines[0].size(), 2u);
    EXPECT_EQ(historyChart(history, 20, french).barColumns, historyMinimumBarColumns);

    history.metric = HistoryMetric::cost;
    EXPECT_EQ(historyChart(history, 80, french).rows[0].figureText, "25\u202f000\u00a0$US");
}

}  // namespace
}  // namespace tallowen
