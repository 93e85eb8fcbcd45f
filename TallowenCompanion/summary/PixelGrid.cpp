#include "summary/PixelGrid.hpp"

#include <algorithm>

namespace tallowen {
namespace {

// Characters are counted as UTF-8 code points, so a stray non-ASCII
// character takes one cell like any other.
bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

size_t characterCount(std::string_view text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

}  // namespace

std::vector<PixelRect> PixelGridShape::filledCells(const PixelRect& bounds) const {
    if (rows.empty()) return {};
    const size_t columns = characterCount(rows.front());
    if (columns < 1) return {};
    const double columnCount = static_cast<double>(columns);
    const double rowCount = static_cast<double>(rows.size());
    const double cell = std::min(bounds.width / columnCount, bounds.height / rowCount);
    const double left = bounds.x + (bounds.width - cell * columnCount) / 2;
    const double top = bounds.y + (bounds.height - cell * rowCount) * 0.5;

    std::vector<PixelRect> cells;
    for (size_t r = 0; r < rows.size(); ++r) {
        const std::string& row = rows[r];
        size_t k = 0;
        for (size_t byte = 0; byte < row.size(); ++byte) {
            if (!startsCharacter(row[byte])) continue;
            if (row[byte] == '1')
                cells.push_back(PixelRect{left + static_cast<double>(k) * cell, top + static_cast<double>(r) * cell,
                                          cell, cell});
            ++k;
        }
    }
    return cells;
}

}  // namespace tallowen
