#include "model/DayTable.hpp"

#include "model/Iso8601Format.hpp"

#include <cinttypes>
#include <cstdio>

namespace tallowen {
namespace {

void appendPadded(std::string& line, std::string_view text, size_t width, bool alignLeft) {
    const std::string padding(width > text.size() ? width - text.size() : 0, ' ');
    if (!alignLeft) line += padding;
    line += text;
    if (alignLeft) line += padding;
}

}  // namespace

std::string dollarsText(int64_t cents) {
    const bool negative = cents < 0;
    // Unsigned, so that the most negative count has a magnitude too.
    const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(cents) : static_cast<uint64_t>(cents);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%s%" PRIu64 ".%02" PRIu64, negative ? "-" : "", magnitude / 100,
                  magnitude % 100);
    return buffer;
}

std::string dayTableLine(std::string_view day, std::string_view tool, int toolColumns,
                         const std::array<std::string, 6>& figures, std::string_view last) {
    constexpr size_t figureColumns[] = {8, 8, 12, 12, 10, 9};
    std::string line;
    appendPadded(line, day, 10, true);
    line += "  ";
    appendPadded(line, tool, static_cast<size_t>(toolColumns), true);
    for (size_t i = 0; i < figures.size(); ++i) {
        line += "  ";
        appendPadded(line, figures[i], figureColumns[i], false);
    }
    line += "  ";
    line += last;
    while (!line.empty() && line.back() == ' ') line.pop_back();
    return line + "\n";
}

std::string dayTableLine(const UsageSample& sample, int toolColumns, std::string_view last) {
    return dayTableLine(sample.dayKey, sample.tool, toolColumns,
                        {std::to_string(sample.sessions), std::to_string(sample.requests),
                         std::to_string(sample.inputTokens), std::to_string(sample.outputTokens),
                         dollarsText(sample.estimatedCostCents), std::to_string(sample.estimatedWaterMilliliters)},
                        last);
}

std::string daysTable(const std::vector<UsageSample>& samples) {
    std::string text =
        dayTableLine("day", "tool", 16, {"sessions", "requests", "input", "output", "cost $", "water ml"}, "updated");
    for (const UsageSample& sample : samples)
        text += dayTableLine(sample, 16, iso8601UtcText(sample.updatedAt).value_or("-"));
    return text;
}

}  // namespace tallowen
