#pragma once

#include "model/Date.hpp"

#include <optional>
#include <string>

namespace tallowen {

// The date as ISO 8601 text in UTC to the millisecond, the fraction written
// only when it is not zero: 2025-03-14T09:15:02Z, 2025-03-14T09:15:02.250Z.
// Nothing for a date that is not finite or lies more than about 95 million
// years from 1970.
std::optional<std::string> iso8601UtcText(Date date);

}  // namespace tallowen
