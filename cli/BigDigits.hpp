#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallowen::cli {

// Large pixel figures for the panel's big numbers: each digit, "%" and space
// is a 3 × 5 pixel glyph drawn with half blocks, 3 lines high, one blank
// column between glyphs. Nothing when the text holds another character.
std::vector<std::string> bigDigitLines(std::string_view text);

inline constexpr int bigDigitLineCount = 3;

}  // namespace tallowen::cli
