#include "IcuLocaleFormatter.hpp"
#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "TerminalSize.hpp"
#include "TerminalStyle.hpp"

#include "store/SqliteSampleStore.hpp"
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

std::string chartText(const UsageHistory& history, const HistoryChart& chart, bool colors) {
    const auto colorOf = [&](int tool) {
        return std::to_string(toolColors[static_cast<size_t>(history.tools[static_cast<size_t>(tool)])]);
    };
    // A glyph in the left tool's colour over the right one's, or in the left tool's shade.
    const auto painted = [&](std::string_view glyph, int tool, int background) {
        const auto shade = toolShades[static_cast<size_t>(tool) % toolShades.size()];
        if (!colors) return std::string(glyph == "█" ? shade : glyph);
        const std::string under = background < 0 ? "" : ";48;5;" + colorOf(background);
        return "\x1b[38;5;" + colorOf(tool) + under + "m" + std::string(glyph) + "\x1b[0m";
    };
    std::string text = chart.heading + "\n";
    for (const auto& line : chart.legendLines) {
        for (const HistoryLegendEntry& entry : line)
            text += (&entry == &line.front() ? "" : "  ") + painted(colors ? "■" : "█", entry.toolIndex, -1) + " " +
                    entry.label + " " + entry.totalText;
        text += "\n";
    }
    text += "\n";
    for (const HistoryChartRow& row : chart.rows) {
        text += row.dayKey;
        if (!row.figureText.empty()) {
            text += "  ";
            for (const HistoryBarCell& cell : row.cells)
                text += painted(leftEighthBlocks[static_cast<size_t>(cell.leftEighths)], cell.leftTool, cell.rightTool);
            text += std::string(static_cast<size_t>(chart.barColumns) - row.cells.size() + 1, ' ') +
                    std::string(static_cast<size_t>(chart.figureColumns - narrowTextColumns(row.figureText)), ' ') +
                    row.figureText;
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
    const auto rangeIsSound = [&](const ParsedOptions& options) -> std::optional<std::string> {
        metric = historyMetricNamed(options.value("--metric").value_or("tokens"));
        if (!metric) return "--metric takes tokens, requests, water or cost, not " + *options.value("--metric");
        std::string error;
        range = historyRange(options.value("--days"), options.value("--since"), options.value("--until"),
                             systemClock()(), LocalCalendar{}, error);
        return range ? std::nullopt : std::optional(error);
    };
    const auto start =
        startCommand("history", arguments, {"--days", "--since", "--until", "--metric"}, {"--json"}, rangeIsSound);
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    const auto samples = readStoredSamples(SqliteSampleStore::locationIn(environment.supportFolder),
                                           [&](SqliteSampleStore& store) {
                                               return store.fetchDays(range->firstDayKey, range->lastDayKey);
                                           });
    if (!samples) {
        std::fprintf(stderr, "tallowen: history: %s\n", samples.error().c_str());
        return 1;
    }
    const UsageHistory history =
        usageHistory(*samples, dayKeysFromTo(range->firstDayKey, range->lastDayKey, environment.calendar), *metric);
    std::string text;
    if (start->options.has("--json")) {
        text = usageHistoryJson(history) + "\n";
    } else {
        const int columns = terminalSize(STDOUT_FILENO).value_or(TerminalExtent{}).columns;
        const HistoryChart chart = historyChart(history, columns, IcuLocaleFormatter::forProcess());
        text = chartText(history, chart, TerminalStyle::forStandardOutput().colors());
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
