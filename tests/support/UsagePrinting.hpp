#pragma once

#include "model/DayUsage.hpp"
#include "model/UsageEvent.hpp"

#include <optional>
#include <ostream>
#include <sstream>
#include <string>

namespace tallowen {

// Readable failure messages for GoogleTest, found by argument-dependent lookup.
inline void PrintTo(const UsageEvent& event, std::ostream* out) {
    *out << "{date " << std::to_string(event.date.secondsSinceReferenceDate) << ", in " << event.inputTokens
         << ", out " << event.outputTokens << ", " << event.costCents << " cents, " << event.waterMilliliters
         << " ml}";
}

inline void PrintTo(const QuotaSnapshot& quota, std::ostream* out) {
    const auto at = [](std::optional<Date> date) {
        return date ? std::to_string(date->secondsSinceReferenceDate) : std::string("none");
    };
    const auto value = [](const auto& optional) {
        std::ostringstream text;
        if (optional) text << *optional;
        return optional ? text.str() : "none";
    };
    *out << "{at " << at(quota.at) << ", primary " << value(quota.primaryPercent) << " reset "
         << at(quota.primaryResetAt) << ", secondary " << value(quota.secondaryPercent) << " reset "
         << at(quota.secondaryResetAt) << ", plan " << value(quota.plan) << "}";
}

}  // namespace tallowen
