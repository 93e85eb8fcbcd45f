#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallowen::cli {

// The columns a UTF-8 text takes in a terminal: ANSI escape sequences take
// none, combining marks and format characters none, East Asian wide and
// full-width characters two, everything else one (block and box characters
// included, as Western terminals draw them).
int displayWidth(std::string_view text);

// `text` followed by spaces up to `width` columns (unchanged when already wider).
std::string padRight(std::string_view text, int width);
// Spaces, then `text`, up to `width` columns.
std::string padLeft(std::string_view text, int width);
// `left`, then `right` flush with column `width`, at least one space between.
std::string spread(std::string_view left, std::string_view right, int width);

// Plain text cut to at most `width` columns between whole characters, ended
// with "…" when something was cut.
std::string truncatedToWidth(std::string_view text, int width);

// Breaks plain text (no escape sequences) into lines of at most `width`
// columns at spaces; a word wider than a line is cut between characters.
std::vector<std::string> wrapText(std::string_view text, int width);

}  // namespace tallowen::cli
