#include "ui/HistoryChart.hpp"

#include "base/CheckedMath.hpp"
#include "ui/MenuFormats.hpp"

#include <algorithm>

namespace tallowen {
namespace {

constexpr int dayKeyColumns = 10;
constexpr int columnsAroundBar = 3;

// `part` of `whole` eighths, rounded to nearest, in 128 bits so no sum of
// int64 figures overflows on the way.
int64_t scaledEighths(int64_t part, int64_t whole, int64_t eighths) {
    const __int128 scaled = (static_cast<__int128>(part) * eighths * 2 + whole) / (static_cast<__int128>(whole) * 2);
    return static_cast<int64_t>(scaled);
}

}  // namespace

std::vector<HistoryBarCell> historyBarCells(const std::vector<int64_t>& toolValues, int64_t scaleTotal,
                                            int barColumns) {
    std::vector<HistoryBarCell> cells;
    if (scaleTotal <= 0 || barColumns <= 0) return cells;
    const int64_t fullEighths = int64_t{barColumns} * 8;
    // Where each tool's part ends, in eighths from the bar's start.
    std::vector<int64_t> ends;
    int64_t runningSum = 0;
    for (const int64_t value : toolValues) {
        addChecked(runningSum, std::max<int64_t>(value, 0));
        ends.push_back(std::min(scaledEighths(runningSum, scaleTotal, fullEighths), fullEighths));
    }
    const int64_t barEighths = ends.empty() ? 0 : ends.back();
    // The eighths of [from, to) that each tool's part covers.
    const auto covered = [&](size_t tool, int64_t from, int64_t to) {
        const int64_t start = tool == 0 ? 0 : ends[tool - 1];
        return std::max<int64_t>(0, std::min(ends[tool], to) - std::max(start, from));
    };
    for (int64_t cellStart = 0; cellStart < barEighths; cellStart += 8) {
        const int64_t cellEnd = std::min(cellStart + 8, barEighths);
        HistoryBarCell cell{-1, static_cast<int>(cellEnd - cellStart), -1};
        if (cellEnd < cellStart + 8) {
            // The bar ends here: its length counts more than a sliver of another
            // tool, so the cell takes the colour of the tool that covers most of it.
            int64_t most = 0;
            for (size_t tool = 0; tool < ends.size(); ++tool)
                if (const int64_t part = covered(tool, cellStart, cellEnd); part > most) {
                    most = part;
                    cell.leftTool = static_cast<int>(tool);
                }
        } else {
            for (size_t tool = 0; tool < ends.size(); ++tool) {
                if (covered(tool, cellStart, cellEnd) == 0) continue;
                if (cell.leftTool < 0) {
                    cell.leftTool = static_cast<int>(tool);
                    cell.leftEighths = static_cast<int>(covered(tool, cellStart, cellEnd));
                }
                // The tool that holds the cell's last eighth fills what the left one leaves.
                if (cell.leftEighths < 8 && ends[tool] >= cellEnd) {
                    cell.rightTool = static_cast<int>(tool);
                    break;
                }
            }
        }
        cells.push_back(cell);
    }
    return cells;
}

std::string historyFigureText(HistoryMetric metric, int64_t value, const LocaleFormatter& locale) {
    switch (metric) {
        case HistoryMetric::tokens: return tokenText(value, locale);
        case HistoryMetric::requests: return std::to_string(value);
        case HistoryMetric::water: return litresText(value, locale);
        case HistoryMetric::cost: return moneyText(value, locale);
    }
    return {};
}

int narrowTextColumns(std::string_view text) {
    int columns = 0;
    for (const char byte : text)
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) ++columns;
    return columns;
}

HistoryChart historyChart(const UsageHistory& history, int terminalColumns, const LocaleFormatter& locale) {
    HistoryChart chart;
    chart.heading = std::string(historyMetricName(history.metric)) + " per day";
    if (!history.days.empty())
        chart.heading += ", " + history.days.front().dayKey + " to " + history.days.back().dayKey;

    std::vector<HistoryLegendEntry> legend;
    for (size_t tool = 0; tool < history.tools.size(); ++tool)
        legend.push_back(HistoryLegendEntry{static_cast<int>(tool), std::string(displayLabel(history.tools[tool])),
                                            historyFigureText(history.metric, history.toolTotals[tool], locale)});
    int lineColumns = 0;
    for (HistoryLegendEntry& entry : legend) {
        const int entryColumns =
            historyLegendSwatchColumns + narrowTextColumns(entry.label) + 1 + narrowTextColumns(entry.totalText);
        const int needed = lineColumns == 0 ? entryColumns : lineColumns + historyLegendGapColumns + entryColumns;
        if (chart.legendLines.empty() || needed > terminalColumns) {
            chart.legendLines.emplace_back();
            lineColumns = entryColumns;
        } else {
            lineColumns = needed;
        }
        chart.legendLines.back().push_back(std::move(entry));
    }

    for (const HistoryDay& day : history.days) {
        HistoryChartRow row{day.dayKey, {}, {}};
        if (day.total > 0) row.figureText = historyFigureText(history.metric, day.total, locale);
        chart.figureColumns = std::max(chart.figureColumns, narrowTextColumns(row.figureText));
        chart.rows.push_back(std::move(row));
    }
    chart.barColumns = std::max(historyMinimumBarColumns,
                                terminalColumns - dayKeyColumns - columnsAroundBar - chart.figureColumns);
    for (size_t index = 0; index < history.days.size(); ++index)
        chart.rows[index].cells =
            historyBarCells(history.days[index].toolValues, history.largestDayTotal, chart.barColumns);
    return chart;
}

}  // namespace tallowen
