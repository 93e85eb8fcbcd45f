#pragma once

#include "summary/BottleLevel.hpp"

#include <array>
#include <string_view>

namespace tallowen {

inline constexpr size_t bottleBitmapColumns = 24;
inline constexpr size_t bottleBitmapRowCount = 44;

// Rows from the top, "1" for a filled cell and "0" for an empty one. The five
// bitmaps share one outline and differ in the water drawn inside.
using BottleBitmap = std::array<std::string_view, bottleBitmapRowCount>;

// Constant data, looked up by the level's raw value.
const BottleBitmap& bottleBitmap(BottleLevel level);

// The bottle is drawn in a frame of the bitmap's proportions.
constexpr double bottleWidthForHeight(double heightPoints) {
    return heightPoints * static_cast<double>(bottleBitmapColumns) / static_cast<double>(bottleBitmapRowCount);
}

// The menu's water block shows the bottle at this height.
inline constexpr double menuBottleHeightPoints = 32.0;

}  // namespace tallowen
