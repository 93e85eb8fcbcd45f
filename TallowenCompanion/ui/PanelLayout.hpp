#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// The room a terminal window offers, in character cells.
struct TerminalExtent {
    int columns = 80;
    int rows = 24;
};

// How the panel is laid out in a terminal. The full panel is the menu's own
// column; the compact ones merge its rows and drop the separators and the
// big figures, with a bottle half the size or none; under the narrowest
// width a line says the terminal is too narrow instead.
enum class PanelLayout { full, compactWithBottle, compact, tooNarrow };

inline constexpr int panelFullColumns = 48;
inline constexpr int panelMinimumColumns = 40;

// The first layout that fits, from the most generous: the full panel when the
// terminal is wide enough and tall enough for all of it, else the compact one
// with its small bottle when that fits the rows, else the compact one without
// (which may still be taller than a very short terminal). Output that goes to
// no terminal keeps the full panel. `heightOf` gives the lines a layout takes
// with the content at hand; it is asked only about layouts that could be chosen.
PanelLayout choosePanelLayout(const std::optional<TerminalExtent>& terminal,
                              const std::function<int(PanelLayout)>& heightOf);

// The columns a layout spreads over: the full panel's own width, a compact
// panel's up to that width, the terminal's for the notice.
int panelColumns(PanelLayout layout, const std::optional<TerminalExtent>& terminal);

// What stands in for the panel under the narrowest width.
std::string terminalTooNarrowText(int columns);

// The lines cut to `rows` so that the top (title and today's figures) stays
// on screen; with `keepsLastLine` the last line (the keys of `watch`) takes
// the place of the last one that fits.
std::vector<std::string> linesWithinRows(std::vector<std::string> lines, int rows, bool keepsLastLine);

// A bitmap of "1" and "0" cells at half its width and height: each 2 × 2
// block becomes one cell, filled when any of its cells is, so one-cell
// outlines survive. A last odd row or column stands alone.
std::vector<std::string> halvedPixelRows(const std::vector<std::string>& rows);

}  // namespace tallowen
