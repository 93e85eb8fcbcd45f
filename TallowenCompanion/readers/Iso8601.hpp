#pragma once

#include "model/Date.hpp"

#include <optional>
#include <string_view>

namespace tallowen {

// An internet date-time such as 2025-01-31T09:15:02.123Z or 2025-01-31T09:15:02+01:00,
// with or without fractional seconds. Nothing for any other text.
std::optional<Date> parseIso8601Timestamp(std::string_view text);

}  // namespace tallowen
