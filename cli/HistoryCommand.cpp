#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "StoreQuery.hpp"
#include "TerminalSize.hpp"
#include "TerminalStyle.hpp"

#include "ui/HistoryChart.hpp"

#include <array>
#include <cstdio>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// Each tool's colour, from the terminal's 256-colour palette, in the tools' fixed order.
constexpr std::array<int, allUsageTools.size()> toolColors = {173, 71, 75, 36, 180, 37, 139, 140, 179, 68, 30, 245};
// Without colours, tools are told apart by their shade.
constexpr std::array<std::string_view, 4> toolShades = {"█", "▓", "▒", "░"};
constexpr std::array<std::string_view, 9> leftEighthBlocks = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█"};

class ChartPainter {
public:
    ChartPainter(const UsageHistory& history, bool colors) : history_(history), colors_(colors) {}

    std::string swatch(int tool) const {
        return colors_ ? painted("■", tool, -1) : std::string(toolShades[shadeOf(tool)]);
    }
    std::string bar(const std::vector<HistoryBarCell>& cells) const {
        std::string text;
        for (const HistoryBarCell& cell : cells) {
            if (colors_) text += painted(leftEighthBlocks[cell.leftEighths], cell.leftTool, cell.rightTool);
            else if (cell.leftEighths == 8) text += toolShades[shadeOf(cell.leftTool)];
            else text += leftEighthBlocks[cell.leftEighths];
        }
        return text;
    }

private:
    size_t shadeOf(int tool) const { return static_cast<size_t>(tool) % toolShades.size(); }
    int colorOf(int tool) const { return toolColors[static_cast<size_t>(history_.tools[static_cast<size_t>(tool)])]; }
    std::string painted(std::string_view glyph, int tool, int background) const {
        std::string text = "\x1b[38;5;" + std::to_string(colorOf(tool));
        if (background >= 0) text += ";48;5;" + std::to_string(colorOf(background));
        return text + "m" + std::string(glyph) + "\x1b[0m";
    }

    const UsageHistory& history_;
    bool colors_;
};

std::string chartText(const UsageHistory& history, const HistoryChart& chart, bool colors) {
    const ChartPainter painter(history, colors);
    std::string text = chart.heading + "\n";
    for (const auto& line : chart.legendLines) {
        for (size_t index = 0; index < line.size(); ++index)
            text += (index == 0 ? "" : "  ") + painter.swatch(line[index].toolIndex) + " " + line[index].label + " " +
                    line[index].totalText;
        text += "\n";
    }
    text += "\n";
    for (const HistoryChartRow& row : chart.rows) {
        text += row.dayKey;
        if (!row.figureText.empty()) {
            const int width = narrowTextColumns(row.figureText);
            text += "  " + painter.bar(row.cells) + std::string(static_cast<size_t>(chart.barColumns) - row.cells.size(), ' ') +
                    " " + std::string(static_cast<size_t>(chart.figureColumns - width), ' ') + row.figureText;
        }
        text += "\n";
    }
    return text;
}

}  // namespace

int runHistoryCommand(const std::vector<std::string>& arguments) {
    std::optional<HistoryMetric> metric;
    std::optional<HistoryRange> range;
    // The range is checked before any folder is looked at; the calendar is the process's either way.
    const auto rangeIsSound = [&](const ParsedOptions& options, std::string& error) {
        metric = historyMetricNamed(options.value("--metric").value_or("tokens"));
        if (!metric) error = "--metric takes tokens, requests, water or cost, not " + *options.value("--metric");
        if (metric)
            range = historyRange(options.value("--days"), options.value("--since"), options.value("--until"),
                                 systemClock()(), LocalCalendar{}, error);
        return range.has_value();
    };
    int exitStatus = 0;
    const auto start = startCommand("history", arguments, {"--days", "--since", "--until", "--metric", "--home", "--data"},
                                    {"--json"}, exitStatus, rangeIsSound);
    if (!start) return exitStatus;
    const ParsedOptions& options = start->options;
    const EngineEnvironment& environment = start->environment;
    std::string error;
    const auto samples = queryStore(
        environment, [&](SqliteSampleStore& store) { return store.fetchDays(range->firstDayKey, range->lastDayKey); },
        error);
    if (!samples) {
        std::fprintf(stderr, "tallowen: history: %s\n", error.c_str());
        return 1;
    }
    const UsageHistory history =
        usageHistory(*samples, dayKeysFromTo(range->firstDayKey, range->lastDayKey, environment.calendar), *metric);
    std::string text;
    if (options.has("--json")) {
        text = usageHistoryJson(history) + "\n";
    } else {
        const int columns = terminalSize(STDOUT_FILENO).value_or(TerminalExtent{}).columns;
        const HistoryChart chart = historyChart(history, columns, LocaleFormatter::forProcess());
        text = chartText(history, chart, TerminalStyle::forStandardOutput().colors());
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
