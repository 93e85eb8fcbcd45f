#include "summary/WaterEquivalent.hpp"

#include "base/CheckedMath.hpp"

#include <algorithm>
#include <cstdio>

namespace tallowen {
namespace {

constexpr double bottleLiters = 1.5;
constexpr double showerLiters = 60.0;
constexpr double showersFromLiters = 90.0;

std::string countText(const char* format, double count) {
    const long long rounded = std::max<int64_t>(roundedToInt64(count), 1);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, rounded);
    return buffer;
}

}  // namespace

std::string waterEquivalentText(int64_t milliliters) {
    const double liters = static_cast<double>(milliliters) / 1000.0;
    if (liters < showersFromLiters) return countText("\u2248 %lld bouteilles", liters / bottleLiters);
    return countText("\u2248 %lld douches", liters / showerLiters);
}

}  // namespace tallowen
