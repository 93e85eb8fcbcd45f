#pragma once

#include "ui/PanelFrame.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tallowen::cli {

// Paints text with ANSI colours for its role (bold, dim, cyan, yellow; dimmed
// and disabled texts dim), or leaves it as it is when colours are off.
class TerminalStyle {
public:
    explicit TerminalStyle(bool colors) : colors_(colors) {}

    // Colours when standard output is a terminal and NO_COLOR is not set.
    static TerminalStyle forStandardOutput();

    bool colors() const { return colors_; }
    std::string paint(TextRole role, std::string_view text) const;

private:
    bool colors_;
};

// Colours only on a terminal, and never when NO_COLOR holds a non-empty value
// (the no-color.org convention).
bool colorsWanted(bool outputIsTerminal, const std::optional<std::string>& noColor);

}  // namespace tallowen::cli
