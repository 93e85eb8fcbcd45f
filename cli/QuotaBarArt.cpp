#include "QuotaBarArt.hpp"

#include <algorithm>
#include <cmath>

namespace tallowen::cli {

std::string quotaBarArt(double percent, int width) {
    const int columns = std::max(width, 0);
    const double clamped = std::isnan(percent) ? 0.0 : std::clamp(percent, 0.0, 100.0);
    const int filled = std::clamp(static_cast<int>(std::lround(columns * clamped / 100.0)), 0, columns);
    std::string bar;
    for (int i = 0; i < columns; ++i) bar += i < filled ? "█" : "░";
    return bar;
}

}  // namespace tallowen::cli
