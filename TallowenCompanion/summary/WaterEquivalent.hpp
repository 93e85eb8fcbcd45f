#pragma once

#include <cstdint>
#include <string>

namespace tallowen {

// An everyday picture of a water volume: 1.5-litre bottles below 90 litres,
// 60-litre showers from there on; the count is rounded half away from zero
// and never falls below 1. "≈ 2 bouteilles", "≈ 2 douches".
std::string waterEquivalentText(int64_t milliliters);

}  // namespace tallowen
