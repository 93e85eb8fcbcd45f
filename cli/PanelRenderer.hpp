#pragma once

#include "TerminalStyle.hpp"
#include "ui/PanelFrame.hpp"

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
std::vector<std::string> renderPanel(const PanelFrame& frame, bool showsKeyHints, const TerminalStyle& style);

// The lines joined, each ended by a newline.
std::string joinedLines(const std::vector<std::string>& lines);

}  // namespace tallowen::cli
