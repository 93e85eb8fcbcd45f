#include "summary/BottleBitmaps.hpp"
#include "summary/BottleLevel.hpp"
#include "summary/PixelGrid.hpp"
#include "summary/WaterEquivalent.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

constexpr std::string_view water = "000101111111111110101000";
constexpr std::string_view blank = "000000000000000000000000";

TEST(BottleLevelTest, RatioBoundariesBelongToTheHigherLevelAndEachLevelHasItsLine) {
    const std::tuple<int64_t, int64_t, BottleLevel> cases[] = {
        {0, 20, BottleLevel::empty},   {-5, 20, BottleLevel::empty},   {1, 0, BottleLevel::medium},
        {500, -3, BottleLevel::medium}, {9, 20, BottleLevel::low},      {10, 20, BottleLevel::medium},
        {29, 20, BottleLevel::medium},  {30, 20, BottleLevel::full},    {59, 20, BottleLevel::full},
        {60, 20, BottleLevel::overflow},
    };
    for (const auto& [today, reference, level] : cases)
        EXPECT_EQ(bottleLevel(today, reference), level) << today << " / " << reference;
    const char* lines[] = {"RIEN AUJOURD'HUI", "SOUS TA MOYENNE", "DANS TA MOYENNE", "AU-DESSUS DE TA MOYENNE",
                           "LE TRIPLE DE TA MOYENNE"};
    for (const BottleLevel level : allBottleLevels) {
        EXPECT_EQ(bottleLevelFromRawValue(rawValue(level)), level);
        EXPECT_EQ(comparisonLine(level), lines[rawValue(level)]);
    }
    for (const int64_t raw : {-1LL, 5LL, 4294967298LL}) EXPECT_FALSE(bottleLevelFromRawValue(raw)) << raw;
}

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
    const std::tuple<PixelRect, double, double, double> cases[] = {
        {{0, 0, 48, 44}, 1, 12, 0},  // 12 points on each side
        {{10, 20, 24, 88}, 1, 10, 42},
        {{0, 0, bottleWidthForHeight(menuBottleHeightPoints), menuBottleHeightPoints}, 32.0 / 44, 0, 0},
    };
    for (const auto& [bounds, cell, left, top] : cases) {
        const std::vector<PixelRect> cells = bottle.filledCells(bounds);
        ASSERT_EQ(cells.size(), 94u);
        // The first filled cell is the cap's, row 1, column 8; the last the bottom's, row 40, column 18.
        EXPECT_NEAR(cells.front().x, left + 8 * cell, 1e-9);
        EXPECT_NEAR(cells.front().y, top + 1 * cell, 1e-9);
        EXPECT_NEAR(cells.back().x, left + 18 * cell, 1e-9);
        EXPECT_NEAR(cells.back().y, top + 40 * cell, 1e-9);
        EXPECT_DOUBLE_EQ(cells.back().width + cells.back().height, 2 * cell);
    }
    const PixelRect bounds{0, 0, 2, 3};
    EXPECT_TRUE(PixelGridShape{}.filledCells(bounds).empty());
    EXPECT_TRUE((PixelGridShape{{"", "111"}}.filledCells(bounds).empty()));
    // Width from the first row; other rows keep each cell at its own index; a non-ASCII character is one cell.
    EXPECT_EQ((PixelGridShape{{"10", "0x21", "\u00e91"}}.filledCells(bounds)),
              (std::vector<PixelRect>{{0, 0, 1, 1}, {3, 1, 1, 1}, {1, 2, 1, 1}}));
}

TEST(WaterEquivalentTest, BottlesBelowNinetyLitresThenShowers) {
    const std::pair<int64_t, const char*> cases[] = {
        {-4000, "\u2248 1 bouteilles"}, {2249, "\u2248 1 bouteilles"}, {2250, "\u2248 2 bouteilles"},
        {89999, "\u2248 60 bouteilles"}, {90000, "\u2248 2 douches"},  {149999, "\u2248 2 douches"},
        {150000, "\u2248 3 douches"},   {60000000000, "\u2248 1000000 douches"},
    };
    for (const auto& [milliliters, text] : cases) EXPECT_EQ(waterEquivalentText(milliliters), text) << milliliters;
}

}  // namespace
}  // namespace tallowen
