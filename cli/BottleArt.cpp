#include "BottleArt.hpp"

#include <algorithm>
#include <array>

namespace tallowen::cli {
namespace {

constexpr int cellColumnsPerCharacter = 2;
constexpr int cellRowsPerCharacter = 4;

// Indexed by upper-left × 8 + upper-right × 4 + lower-left × 2 + lower-right.
constexpr std::array<const char*, 16> quadrantCharacters = {
    " ", "▗", "▖", "▄", "▝", "▐", "▞", "▟", "▘", "▚", "▌", "▙", "▀", "▜", "▛", "█",
};

bool cellSet(const std::vector<std::string>& rows, size_t row, size_t column) {
    return row < rows.size() && column < rows[row].size() && rows[row][column] == '1';
}

// One quadrant: a column of two cells.
bool quadrantSet(const std::vector<std::string>& rows, size_t topRow, size_t column) {
    return cellSet(rows, topRow, column) || cellSet(rows, topRow + 1, column);
}

}  // namespace

std::vector<std::string> bottleArtLines(const std::vector<std::string>& bitmapRows) {
    size_t columns = 0;
    for (const auto& row : bitmapRows) columns = std::max(columns, row.size());
    const size_t characterColumns = (columns + cellColumnsPerCharacter - 1) / cellColumnsPerCharacter;
    const size_t lineCount = (bitmapRows.size() + cellRowsPerCharacter - 1) / cellRowsPerCharacter;

    std::vector<std::string> lines;
    lines.reserve(lineCount);
    for (size_t line = 0; line < lineCount; ++line) {
        const size_t top = line * cellRowsPerCharacter;
        std::string text;
        for (size_t character = 0; character < characterColumns; ++character) {
            const size_t left = character * cellColumnsPerCharacter;
            const int index = (quadrantSet(bitmapRows, top, left) ? 8 : 0) +
                              (quadrantSet(bitmapRows, top, left + 1) ? 4 : 0) +
                              (quadrantSet(bitmapRows, top + 2, left) ? 2 : 0) +
                              (quadrantSet(bitmapRows, top + 2, left + 1) ? 1 : 0);
            text += quadrantCharacters[static_cast<size_t>(index)];
        }
        lines.push_back(std::move(text));
    }
    return lines;
}

}  // namespace tallowen::cli
