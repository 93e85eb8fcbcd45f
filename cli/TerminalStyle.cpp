#include "TerminalStyle.hpp"

#include <cstdlib>
#include <unistd.h>

namespace tallowen::cli {
namespace {

std::string_view escapeFor(TextRole role) {
    switch (role) {
        case TextRole::primary: return "\x1b[1m";
        case TextRole::secondary:
        case TextRole::dimmed:
        case TextRole::disabled: return "\x1b[2m";
        case TextRole::accent: return "\x1b[36m";
        case TextRole::warning: return "\x1b[33m";
    }
    return "";
}

constexpr std::string_view resetEscape = "\x1b[0m";

}  // namespace

TerminalStyle TerminalStyle::forStandardOutput() {
    const char* noColor = std::getenv("NO_COLOR");
    return TerminalStyle(colorsWanted(::isatty(STDOUT_FILENO) == 1,
                                      noColor ? std::optional<std::string>(noColor) : std::nullopt));
}

std::string TerminalStyle::paint(TextRole role, std::string_view text) const {
    if (!colors_ || text.empty()) return std::string(text);
    std::string painted(escapeFor(role));
    painted += text;
    painted += resetEscape;
    return painted;
}

bool colorsWanted(bool outputIsTerminal, const std::optional<std::string>& noColor) {
    return outputIsTerminal && (!noColor || noColor->empty());
}

}  // namespace tallowen::cli
