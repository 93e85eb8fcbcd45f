#include "ui/CleaningProgress.hpp"

#include "base/CheckedMath.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tallowen {

std::string cleaningPercentText(double progress) {
    // A progress that is not a finite fraction is shown as nothing done yet.
    const double percent = std::isfinite(progress) ? std::clamp(progress * 100.0, -1.0e15, 1.0e15) : 0.0;
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%lld %%", static_cast<long long>(roundedToInt64(percent)));
    return buffer;
}

double cleaningBarFraction(double progress) {
    if (std::isnan(progress)) return 0;
    return std::clamp(progress, 0.0, 1.0);
}

}  // namespace tallowen
