#include "BigDigits.hpp"

#include <array>
#include <optional>

namespace tallowen::cli {
namespace {

using Glyph = std::array<const char*, 5>;

std::optional<Glyph> glyphFor(char c) {
    switch (c) {
        case '0': return Glyph{"111", "101", "101", "101", "111"};
        case '1': return Glyph{"010", "110", "010", "010", "111"};
        case '2': return Glyph{"111", "001", "111", "100", "111"};
        case '3': return Glyph{"111", "001", "111", "001", "111"};
        case '4': return Glyph{"101", "101", "111", "001", "001"};
        case '5': return Glyph{"111", "100", "111", "001", "111"};
        case '6': return Glyph{"111", "100", "111", "101", "111"};
        case '7': return Glyph{"111", "001", "001", "001", "001"};
        case '8': return Glyph{"111", "101", "111", "101", "111"};
        case '9': return Glyph{"111", "101", "111", "001", "111"};
        case '%': return Glyph{"101", "001", "010", "100", "101"};
        case ' ': return Glyph{"000", "000", "000", "000", "000"};
        default: return std::nullopt;
    }
}

const char* halfBlock(bool top, bool bottom) {
    if (top && bottom) return "█";
    if (top) return "▀";
    if (bottom) return "▄";
    return " ";
}

}  // namespace

std::vector<std::string> bigDigitLines(std::string_view text) {
    std::vector<std::string> lines(bigDigitLineCount);
    for (size_t i = 0; i < text.size(); ++i) {
        const auto glyph = glyphFor(text[i]);
        if (!glyph) return {};
        for (int line = 0; line < bigDigitLineCount; ++line) {
            if (i > 0) lines[line] += ' ';
            const int top = line * 2;
            for (int column = 0; column < 3; ++column) {
                const bool topSet = (*glyph)[top][column] == '1';
                const bool bottomSet = top + 1 < 5 && (*glyph)[top + 1][column] == '1';
                lines[line] += halfBlock(topSet, bottomSet);
            }
        }
    }
    return lines;
}

}  // namespace tallowen::cli
