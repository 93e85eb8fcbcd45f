#pragma once

#include "TerminalStyle.hpp"
#include "ui/CountingText.hpp"
#include "ui/LocaleFormatter.hpp"
#include "ui/MenuModel.hpp"

#include <string>
#include <vector>

namespace tallowen::cli {

// The whole panel fits this many terminal columns.
inline constexpr int panelWidth = 48;

// What changes between two drawings of the same model: the animated title and
// the climbing token counter, and whether the keys of `watch` are shown.
struct PanelFrame {
    // The typed title with its cursor: "TALLOWEN_".
    std::string title = "TALLOWEN_";
    // The counter's current text; the model's token text when empty.
    std::string tokenCounter;
    bool showsKeyHints = false;
};

// The menu's token counter for a model: today's tokens, the token format,
// the model's pace. The counter formats with `locale`, which must outlive it.
CountingText menuTokenCounter(const MenuModel& model, const LocaleFormatter& locale);

// The panel as lines of at most `panelWidth` columns, top to bottom: title,
// today (big request count, tokens, cost, water with the bottle and the
// comparison), tools of the day, week, quotas, detected tools, the last
// import and, in `watch`, the keys. While the duplicate purge runs, the
// cleaning view instead. The Mac application's cloud lines, its sync and
// relaunch commands, launch at login and the update check are left out.
std::vector<std::string> renderPanel(const MenuModel& model, const PanelFrame& frame, const TerminalStyle& style);

// The cleaning view alone: title, "NETTOYAGE DES MESURES", the percentage,
// the bar and the note.
std::vector<std::string> renderCleaningView(const MenuCleaningView& cleaning, const PanelFrame& frame,
                                            const TerminalStyle& style);

// The lines joined, each ended by a newline.
std::string joinedLines(const std::vector<std::string>& lines);

}  // namespace tallowen::cli
