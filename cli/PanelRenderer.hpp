#pragma once

#include "TerminalStyle.hpp"
#include "ui/PanelFrame.hpp"
#include "ui/PanelLayout.hpp"

#include <optional>

#include <string>
#include <vector>

namespace tallowen::cli {

// The whole panel fits this many terminal columns.
inline constexpr int panelWidth = 48;

// The panel as lines of at most `panelWidth` columns, top to bottom: title,
// today (big request count, tokens, cost, water with the bottle and the
// comparison), tools of the day, week, quotas, detected tools, the last
// import and, in `watch`, the keys. While the purge runs, the title and the
// cleaning card instead. The frame's cloud lines, launch at login and update
// check have no place in a terminal.
// A compact layout spreads over `columns` and merges the rows; under the
// narrowest width one line says the terminal is too narrow.
std::vector<std::string> renderPanel(const PanelFrame& frame, bool showsKeyHints, const TerminalStyle& style,
                                     PanelLayout layout = PanelLayout::full, int columns = panelWidth);

// The panel laid out for the terminal `terminal` (none: output to a pipe or
// a file, which gets the full panel), drawing each layout the engine asks
// about; with `cutToRows` no taller than the terminal.
std::vector<std::string> fittedPanel(const PanelFrame& frame, bool showsKeyHints, const TerminalStyle& style,
                                     const std::optional<TerminalExtent>& terminal, bool cutToRows);

// The lines joined, each ended by a newline.
std::string joinedLines(const std::vector<std::string>& lines);

}  // namespace tallowen::cli
