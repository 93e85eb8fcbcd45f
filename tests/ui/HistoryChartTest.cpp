#include "IcuLocaleFormatter.hpp"
#include "ui/HistoryChart.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using Cells = std::vector<HistoryBarCell>;

TEST(HistoryChartTest, BarsSplitByToolToTheNearestEighth) {
    constexpr int64_t huge = std::numeric_limits<int64_t>::max() / 2;
    const struct {
        std::vector<int64_t> values;
        int64_t scale;
        int columns;
        Cells cells;
    } cases[] = {
        {{10}, 10, 2, {{0, 8, -1}, {0, 8, -1}}},
        {{5}, 10, 2, {{0, 8, -1}}},
        {{1}, 16, 2, {{0, 1, -1}}},
        {{1}, 40, 2, {}},                             // below half an eighth
        {{3, 13}, 16, 2, {{0, 3, 1}, {1, 8, -1}}},    // the first tool's end shares a cell with the second
        {{1, 1, 14}, 16, 2, {{0, 1, 2}, {2, 8, -1}}}, // a sliver between two tools does not show
        {{3, 2}, 16, 2, {{0, 5, -1}}},                // the bar ends inside a shared cell: full length
        {{2, 4}, 16, 2, {{1, 6, -1}}},                // in the colour that covers most of it
        {{1, 0, 15}, 16, 2, {{0, 1, 2}, {2, 8, -1}}}, // an unused tool takes no room
        {{-4, 8}, 8, 1, {{1, 8, -1}}},                // a negative figure counts as zero
        {{huge, huge}, huge * 2, 1, {{0, 4, 1}}},     // sums far beyond 64-bit products
        {{4}, 0, 4, {}},
    };
    for (const auto& c : cases) EXPECT_EQ(historyBarCells(c.values, c.scale, c.columns), c.cells) << c.values.front();
}

TEST(HistoryChartTest, LaidOutForTheTerminalWidthWithGapsAndAWrappedLegend) {
    UsageHistory history;
    history.tools = {UsageTool::claudeCode, UsageTool::codex, UsageTool::cursor};
    history.toolTotals = {2500000, 1200, 800};
    history.days = {{"2025-03-01", {2500000, 0, 0}, 2500000}, {"2025-03-02", {0, 0, 0}, 0},
                    {"2025-03-03", {0, 1200, 800}, 2000}};
    history.largestDayTotal = 2500000;
    const IcuLocaleFormatter french("fr_FR");

    const HistoryChart wide = historyChart(history, 80, french);
    EXPECT_TRUE(wide.rows[1].figureText.empty() && wide.rows[1].cells.empty());
    EXPECT_EQ(wide.rows[2].figureText, "2 k");

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
