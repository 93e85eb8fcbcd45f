#include "ui/PanelLayout.hpp"

#include <algorithm>

namespace tallowen {

PanelLayout choosePanelLayout(const std::optional<TerminalExtent>& terminal,
                              const std::function<int(PanelLayout)>& heightOf) {
    if (!terminal) return PanelLayout::full;
    if (terminal->columns < panelMinimumColumns) return PanelLayout::tooNarrow;
    if (terminal->columns >= panelFullColumns && heightOf(PanelLayout::full) <= terminal->rows)
        return PanelLayout::full;
    if (heightOf(PanelLayout::compactWithBottle) <= terminal->rows) return PanelLayout::compactWithBottle;
    return PanelLayout::compact;
}

int panelColumns(PanelLayout layout, const std::optional<TerminalExtent>& terminal) {
    if (layout == PanelLayout::full || !terminal) return panelFullColumns;
    if (layout == PanelLayout::tooNarrow) return std::max(terminal->columns, 1);
    return std::min(terminal->columns, panelFullColumns);
}

std::string terminalTooNarrowText(int columns) {
    return "Terminal too narrow: " + std::to_string(columns) + " columns, the panel needs " +
           std::to_string(panelMinimumColumns) + ".";
}

std::vector<std::string> linesWithinRows(std::vector<std::string> lines, int rows, bool keepsLastLine) {
    const size_t room = static_cast<size_t>(std::max(rows, 1));
    if (lines.size() <= room) return lines;
    std::string last = std::move(lines.back());
    lines.resize(room);
    if (keepsLastLine) lines.back() = std::move(last);
    return lines;
}

std::vector<std::string> halvedPixelRows(const std::vector<std::string>& rows) {
    const auto filled = [&](size_t row, size_t column) {
        return row < rows.size() && column < rows[row].size() && rows[row][column] == '1';
    };
    std::vector<std::string> halved;
    for (size_t row = 0; row < rows.size(); row += 2) {
        std::string cells;
        const size_t width = std::max(rows[row].size(), row + 1 < rows.size() ? rows[row + 1].size() : 0);
        for (size_t column = 0; column < width; column += 2)
            cells += filled(row, column) || filled(row, column + 1) || filled(row + 1, column) ||
                             filled(row + 1, column + 1)
                         ? '1'
                         : '0';
        halved.push_back(std::move(cells));
    }
    return halved;
}

}  // namespace tallowen
