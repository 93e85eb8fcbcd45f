#pragma once

#include "model/Date.hpp"

#include <functional>

namespace tallowen {

// The engine never reads the wall clock itself: it is handed one.
using Clock = std::function<Date()>;

Clock systemClock();

}  // namespace tallowen
