#include "summary/BottleBitmaps.hpp"
#include "summary/PixelGrid.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

constexpr std::string_view water = "000101111111111110101000";
constexpr std::string_view bevel = "000010000000000000010000";
constexpr std::string_view bottom = "000001111111111111100000";
constexpr std::string_view blank = "000000000000000000000000";

size_t filledCount(std::string_view row) { return static_cast<size_t>(std::count(row.begin(), row.end(), '1')); }

TEST(BottleBitmapsTest, EveryLevelIs44RowsOf24CellsAroundOneOutline) {
    const struct {
        BottleLevel level;
        size_t waterRows;
        std::string_view cap;
    } cases[] = {
        {BottleLevel::empty, 0, "000000001100001100000000"},  {BottleLevel::low, 7, "000000001100001100000000"},
        {BottleLevel::medium, 14, "000000001100001100000000"}, {BottleLevel::full, 25, "000000001100001100000000"},
        {BottleLevel::overflow, 25, "000000001111111100000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(rawValue(c.level));
        const BottleBitmap& bitmap = bottleBitmap(c.level);
        for (const std::string_view row : bitmap) {
            EXPECT_EQ(row.size(), 24u);
            EXPECT_EQ(row.find_first_not_of("01"), std::string_view::npos);
        }
        EXPECT_EQ(bitmap[0], blank);
        EXPECT_EQ(bitmap[1], c.cap);
        // The water rises from the bevel upwards.
        EXPECT_EQ(static_cast<size_t>(std::count(bitmap.begin(), bitmap.end(), water)), c.waterRows);
        for (size_t row = 39 - c.waterRows; row < 39; ++row) EXPECT_EQ(bitmap[row], water) << row;
        EXPECT_EQ(bitmap[39], bevel);
        EXPECT_EQ(bitmap[40], bottom);
    }
}

TEST(BottleBitmapsTest, EmptyBottleHoldsNothingAndOnlyTheOverflowSpills) {
    const BottleBitmap& empty = bottleBitmap(BottleLevel::empty);
    // From the shoulders to the bevel only the two sides of the outline are set.
    for (size_t row = 9; row <= 39; ++row) EXPECT_EQ(filledCount(empty[row]), 2u) << row;
    for (size_t row = 2; row <= 8; ++row) EXPECT_EQ(empty[row], "000000000100001000000000") << row;

    for (const BottleLevel level : {BottleLevel::empty, BottleLevel::low, BottleLevel::medium, BottleLevel::full})
        for (size_t row = 41; row < 44; ++row) EXPECT_EQ(bottleBitmap(level)[row], blank);
    const BottleBitmap& overflow = bottleBitmap(BottleLevel::overflow);
    EXPECT_EQ(overflow[41], "000111111111111111111000");
    EXPECT_EQ(overflow[42], "011111111111111111111110");
    EXPECT_EQ(overflow[43], "000011111111111111110000");
    EXPECT_EQ(overflow[2], "000000000111111000000000");
    EXPECT_EQ(overflow[13], "000010111111111110010000");
}

TEST(PixelGridTest, CellsAreSquareAsLargeAsFitsAndCentred) {
    const PixelGridShape bottle = PixelGridShape::fromRows(bottleBitmap(BottleLevel::empty));
    size_t expectedCells = 0;
    for (const std::string& row : bottle.rows) expectedCells += filledCount(row);

    const struct {
        const char* name;
        PixelRect bounds;
        double cell;
        double left;
        double top;
    } cases[] = {
        {"exact fit", {0, 0, 24, 44}, 1, 0, 0},
        {"wider: 12 points each side", {0, 0, 48, 44}, 1, 12, 0},
        {"twice as large", {0, 0, 48, 88}, 2, 0, 0},
        {"taller, offset origin", {10, 20, 24, 88}, 1, 10, 42},
        {"menu size", {0, 0, bottleWidthForHeight(menuBottleHeightPoints), menuBottleHeightPoints}, 32.0 / 44, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<PixelRect> cells = bottle.filledCells(c.bounds);
        ASSERT_EQ(cells.size(), expectedCells);
        // The first filled cell is the cap's, row 1, column 8.
        EXPECT_NEAR(cells[0].x, c.left + 8 * c.cell, 1e-9);
        EXPECT_NEAR(cells[0].y, c.top + 1 * c.cell, 1e-9);
        EXPECT_DOUBLE_EQ(cells[0].width, c.cell);
        EXPECT_DOUBLE_EQ(cells[0].height, c.cell);
        for (const PixelRect& cell : cells) {
            EXPECT_GE(cell.x, c.left - 1e-9);
            EXPECT_LE(cell.x + cell.width, c.left + 24 * c.cell + 1e-9);
        }
    }
}

TEST(PixelGridTest, OddRowsAreDrawnAsTheyAre) {
    const PixelRect bounds{0, 0, 2, 3};
    EXPECT_TRUE(PixelGridShape{}.filledCells(bounds).empty());
    EXPECT_TRUE((PixelGridShape{{"", "111"}}.filledCells(bounds).empty()));
    // Width from the first row; other rows keep each cell at its own index.
    EXPECT_EQ((PixelGridShape{{"10", "0x21", "1"}}.filledCells(bounds)),
              (std::vector<PixelRect>{{0, 0, 1, 1}, {3, 1, 1, 1}, {0, 2, 1, 1}}));
    // A non-ASCII character takes one cell.
    EXPECT_EQ((PixelGridShape{{"\u00e91"}}.filledCells({0, 0, 2, 1})), (std::vector<PixelRect>{{1, 0, 1, 1}}));
}

}  // namespace
}  // namespace tallowen
