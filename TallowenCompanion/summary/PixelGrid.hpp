#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// A rectangle in points, y growing downwards.
struct PixelRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

// A picture made of square cells: each row is a text where "1" fills a cell
// and any other character leaves it empty; the first row is the top one.
struct PixelGridShape {
    std::vector<std::string> rows;

    template <typename Rows>
    static PixelGridShape fromRows(const Rows& texts) {
        return PixelGridShape{std::vector<std::string>(std::begin(texts), std::end(texts))};
    }

    // The filled cells laid out in `bounds`: square cells as large as the
    // whole grid allows (its width taken from the first row), the grid
    // centred. Rows longer or shorter than the first keep each cell at its
    // own index. No rows, or an empty first row, give no cells.
    std::vector<PixelRect> filledCells(const PixelRect& bounds) const;
};

}  // namespace tallowen
