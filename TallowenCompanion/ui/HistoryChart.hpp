#pragma once

#include "model/UsageTool.hpp"
#include "summary/UsageHistory.hpp"
#include "ui/LocaleFormatter.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace tallowen {

// One character cell of a bar, in eighths of its width: the tool drawn from
// its left edge over `leftEighths` (1 to 8), and the tool that fills the rest
// of the cell, or -1 where the bar ends inside it. Tools are indexes into the
// history's tools.
struct HistoryBarCell {
    int leftTool = 0;
    int leftEighths = 8;
    int rightTool = -1;

    friend bool operator==(const HistoryBarCell&, const HistoryBarCell&) = default;
};

// A day's bar: `scaleTotal` fills `barColumns` cells. Each tool's part ends
// where its running sum falls, rounded to the nearest eighth, so the parts add
// up to the whole bar and its length is exact. A cell shows two tools at
// most: one from its left edge and the one holding its last eighth; a sliver
// between them does not show, and the bar's last cell takes the colour of the
// tool covering most of it. Negative values count as zero; empty for a day
// without use.
std::vector<HistoryBarCell> historyBarCells(const std::vector<int64_t>& toolValues, int64_t scaleTotal,
                                            int barColumns);

// A figure in the panel's formats: tokens "206 k", requests in decimal, water
// "0,4 L", cost "12,50 $US" ("?" when zero).
std::string historyFigureText(HistoryMetric metric, int64_t value, const LocaleFormatter& locale);

struct HistoryChartRow {
    std::string dayKey;
    std::vector<HistoryBarCell> cells;
    // Empty on a day without use, so that the gap shows.
    std::string figureText;
};

struct HistoryLegendEntry {
    int toolIndex = 0;
    std::string label;  // "CLAUDE CODE"
    std::string totalText;
};

// The history laid out for a terminal `terminalColumns` wide: a heading, the
// legend broken into lines that fit, and one row per day: the day key, two
// spaces, the bar, a space, the figure flush right in its column.
struct HistoryChart {
    std::string heading;  // "tokens per day, 2026-11-08 to 2026-11-21"
    std::vector<std::vector<HistoryLegendEntry>> legendLines;
    std::vector<HistoryChartRow> rows;
    int barColumns = 0;
    int figureColumns = 0;
};

// The narrowest bar the chart keeps, whatever the terminal.
inline constexpr int historyMinimumBarColumns = 8;
// Legend entries are drawn as "■ LABEL total", two spaces apart.
inline constexpr int historyLegendSwatchColumns = 2;
inline constexpr int historyLegendGapColumns = 2;

HistoryChart historyChart(const UsageHistory& history, int terminalColumns, const LocaleFormatter& locale);

// Columns of plain text that holds no wide characters: its code points.
int narrowTextColumns(std::string_view text);

}  // namespace tallowen
