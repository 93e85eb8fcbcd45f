#pragma once

#include <string>

namespace tallowen::cli {

// A bar `width` columns wide: "█" for the used part (percent clamped to
// 0…100, rounded to whole columns), "░" for the rest.
std::string quotaBarArt(double percent, int width);

}  // namespace tallowen::cli
