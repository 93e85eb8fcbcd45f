#pragma once

#include "model/Date.hpp"

#include <cstdint>

namespace tallowen {

// One billed request, already priced.
struct UsageEvent {
    Date date;
    int64_t inputTokens = 0;
    int64_t outputTokens = 0;
    int64_t costCents = 0;
    int64_t waterMilliliters = 0;

    friend bool operator==(const UsageEvent&, const UsageEvent&) = default;
};

}  // namespace tallowen
