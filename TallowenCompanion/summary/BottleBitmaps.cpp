#include "summary/BottleBitmaps.hpp"

#include <initializer_list>
#include <stdexcept>

namespace tallowen {
namespace {

constexpr std::string_view blank = "000000000000000000000000";
constexpr std::string_view cap = "000000001100001100000000";
constexpr std::string_view neck = "000000000100001000000000";
constexpr std::string_view shoulder1 = "000000001000000100000000";
constexpr std::string_view shoulder2 = "000000010000000010000000";
constexpr std::string_view shoulder3 = "000000100000000001000000";
constexpr std::string_view shoulder4 = "000001000000000000100000";
// The fifth shoulder is also the bevel under the body.
constexpr std::string_view shoulder5 = "000010000000000000010000";
constexpr std::string_view wall = "000100000000000000001000";
// A one-cell gap inside the left wall and a thin highlight near the right one.
constexpr std::string_view water = "000101111111111110101000";
constexpr std::string_view bottom = "000001111111111111100000";
constexpr std::string_view filledShoulder1 = "000000001011110100000000";
constexpr std::string_view filledShoulder2 = "000000010111111010000000";
constexpr std::string_view filledShoulder3 = "000000101111111101000000";
constexpr std::string_view filledShoulder4 = "000001011111111110100000";
constexpr std::string_view filledShoulder5 = "000010111111111110010000";
constexpr std::string_view filledCap = "000000001111111100000000";
constexpr std::string_view filledNeck = "000000000111111000000000";
constexpr std::string_view puddle1 = "000111111111111111111000";
constexpr std::string_view puddle2 = "011111111111111111111110";
constexpr std::string_view puddle3 = "000011111111111111110000";

struct Run {
    std::string_view row;
    size_t count;
};

// Evaluated at compile time: a run list that does not make 44 rows of 24
// cells does not compile.
constexpr BottleBitmap bitmapOf(std::initializer_list<Run> runs) {
    BottleBitmap bitmap{};
    size_t next = 0;
    for (const Run& run : runs) {
        if (run.row.size() != bottleBitmapColumns) throw std::logic_error("bottle row of the wrong width");
        for (size_t i = 0; i < run.count; ++i) {
            if (next == bitmap.size()) throw std::logic_error("too many bottle rows");
            bitmap[next++] = run.row;
        }
    }
    if (next != bitmap.size()) throw std::logic_error("too few bottle rows");
    return bitmap;
}

constexpr BottleBitmap emptyBitmap = bitmapOf({
    {blank, 1}, {cap, 1}, {neck, 7},
    {shoulder1, 1}, {shoulder2, 1}, {shoulder3, 1}, {shoulder4, 1}, {shoulder5, 1},
    {wall, 25}, {shoulder5, 1}, {bottom, 1}, {blank, 3},
});

constexpr BottleBitmap lowBitmap = bitmapOf({
    {blank, 1}, {cap, 1}, {neck, 7},
    {shoulder1, 1}, {shoulder2, 1}, {shoulder3, 1}, {shoulder4, 1}, {shoulder5, 1},
    {wall, 18}, {water, 7}, {shoulder5, 1}, {bottom, 1}, {blank, 3},
});

constexpr BottleBitmap mediumBitmap = bitmapOf({
    {blank, 1}, {cap, 1}, {neck, 7},
    {shoulder1, 1}, {shoulder2, 1}, {shoulder3, 1}, {shoulder4, 1}, {shoulder5, 1},
    {wall, 11}, {water, 14}, {shoulder5, 1}, {bottom, 1}, {blank, 3},
});

constexpr BottleBitmap fullBitmap = bitmapOf({
    {blank, 1}, {cap, 1}, {neck, 7},
    {filledShoulder1, 1}, {filledShoulder2, 1}, {filledShoulder3, 1}, {filledShoulder4, 1}, {filledShoulder5, 1},
    {water, 25}, {shoulder5, 1}, {bottom, 1}, {blank, 3},
});

constexpr BottleBitmap overflowBitmap = bitmapOf({
    {blank, 1}, {filledCap, 1}, {filledNeck, 7},
    {filledShoulder1, 1}, {filledShoulder2, 1}, {filledShoulder3, 1}, {filledShoulder4, 1}, {filledShoulder5, 1},
    {water, 25}, {shoulder5, 1}, {bottom, 1}, {puddle1, 1}, {puddle2, 1}, {puddle3, 1},
});

// In the order of the levels' raw values.
constexpr std::array<BottleBitmap, 5> bitmapsByLevel = {emptyBitmap, lowBitmap, mediumBitmap, fullBitmap,
                                                        overflowBitmap};

}  // namespace

const BottleBitmap& bottleBitmap(BottleLevel level) { return bitmapsByLevel.at(static_cast<size_t>(rawValue(level))); }

}  // namespace tallowen
