#include "ui/LocaleFormatter.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tallowen {

RelativeTime relativeTimeOf(double elapsedSeconds) {
    const double seconds = std::isfinite(elapsedSeconds) && elapsedSeconds > 0 ? elapsedSeconds : 0;
    struct Unit {
        double seconds;
        RelativeTimeUnit unit;
    };
    constexpr Unit units[] = {
        {365.0 * 86400, RelativeTimeUnit::year}, {30.0 * 86400, RelativeTimeUnit::month},
        {7.0 * 86400, RelativeTimeUnit::week},   {86400, RelativeTimeUnit::day},
        {3600, RelativeTimeUnit::hour},          {60, RelativeTimeUnit::minute},
        {1, RelativeTimeUnit::second},
    };
    Unit chosen = units[std::size(units) - 1];
    for (const Unit& unit : units) {
        if (seconds >= unit.seconds) {
            chosen = unit;
            break;
        }
    }
    // Far beyond any real interval the count still fits.
    const double count = std::min(std::floor(seconds / chosen.seconds), 9.0e18);
    return RelativeTime{static_cast<int64_t>(count), chosen.unit};
}

}  // namespace tallowen
