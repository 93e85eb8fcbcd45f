#include "base/CheckedMath.hpp"

#include <cmath>

namespace tallowen {

int64_t roundedToInt64(double value) {
    const double rounded = std::round(value);
    // 2^63 is exactly representable; anything at or above it does not fit.
    if (!std::isfinite(rounded) || rounded >= 9223372036854775808.0 || rounded < -9223372036854775808.0)
        fatalArithmetic("value out of the signed 64-bit range");
    return static_cast<int64_t>(rounded);
}

}  // namespace tallowen
