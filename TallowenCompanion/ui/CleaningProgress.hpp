#pragma once

#include <string>

namespace tallowen {

// The duplicate purge's progress as the cleaning view shows it: the fraction
// done × 100 rounded half away from zero, then " %" ("1 %" from 0.005). A
// progress beyond 1 keeps its number while the bar stops at its end.
std::string cleaningPercentText(double progress);

// The filled part of the bar's width, 0 to 1.
double cleaningBarFraction(double progress);

}  // namespace tallowen
