#include "summary/BottleBitmaps.hpp"
#include "summary/PixelGrid.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

constexpr std::string_view water = "000101111111111110101000";
constexpr std::string_view blank = "000000000000000000000000";

TEST(BottleBitmapsTest, FiveBitmapsOf44RowsOf24CellsWithTheWaterRisingFromTheBevel) {
    const size_t waterRows[] = {0, 7, 14, 25, 25};
    for (const BottleLevel level : allBottleLevels) {
        const BottleBitmap& bitmap = bottleBitmap(level);
        const size_t rows = waterRows[rawValue(level)];
        EXPECT_EQ(static_cast<size_t>(std::count(bitmap.begin(), bitmap.end(), water)), rows);
        EXPECT_TRUE(std::all_of(bitmap.begin() + 39 - rows, bitmap.begin() + 39, [](auto r) { return r == water; }));
        EXPECT_EQ(bitmap[39], "000010000000000000010000");
        EXPECT_EQ(bitmap[40], "000001111111111111100000");
        const bool blankBelow = std::all_of(bitmap.begin() + 41, bitmap.end(), [](auto r) { return r == blank; });
        EXPECT_EQ(blankBelow, level != BottleLevel::overflow);
    }
    // The empty bottle: from the shoulders to the bevel only the outline's two sides.
    const BottleBitmap& empty = bottleBitmap(BottleLevel::empty);
    for (size_t row = 9; row <= 39; ++row) EXPECT_EQ(std::count(empty[row].begin(), empty[row].end(), '1'), 2) << row;
}

TEST(PixelGridTest, SquareCellsAsLargeAsFitCentredInTheRectangle) {
    const PixelGridShape bottle = PixelGridShape::fromRows(bottleBitmap(BottleLevel::empty));
    const struct {
        PixelRect bounds;
        double cell, left, top;
    } cases[] = {
        {{0, 0, 48, 44}, 1, 12, 0},  // 12 points on each side
        {{10, 20, 24, 88}, 1, 10, 42},
        {{0, 0, bottleWidthForHeight(menuBottleHeightPoints), menuBottleHeightPoints}, 32.0 / 44, 0, 0},
    };
    for (const auto& c : cases) {
        const std::vector<PixelRect> cells = bottle.filledCells(c.bounds);
        ASSERT_EQ(cells.size(), 94u);
        // The first filled cell is the cap's, row 1, column 8; the last the bottom's, row 40, column 18.
        EXPECT_NEAR(cells.front().x, c.left + 8 * c.cell, 1e-9);
        EXPECT_NEAR(cells.front().y, c.top + 1 * c.cell, 1e-9);
        EXPECT_NEAR(cells.back().x, c.left + 18 * c.cell, 1e-9);
        EXPECT_NEAR(cells.back().y, c.top + 40 * c.cell, 1e-9);
        EXPECT_DOUBLE_EQ(cells.back().width + cells.back().height, 2 * c.cell);
    }
    const PixelRect bounds{0, 0, 2, 3};
    EXPECT_TRUE(PixelGridShape{}.filledCells(bounds).empty());
    EXPECT_TRUE((PixelGridShape{{"", "111"}}.filledCells(bounds).empty()));
    // Width from the first row; other rows keep each cell at its own index; a non-ASCII character is one cell.
    EXPECT_EQ((PixelGridShape{{"10", "0x21", "\u00e91"}}.filledCells(bounds)),
              (std::vector<PixelRect>{{0, 0, 1, 1}, {3, 1, 1, 1}, {1, 2, 1, 1}}));
}

}  // namespace
}  // namespace tallowen
