#pragma once

#include "model/DayUsage.hpp"
#include "model/UsageEvent.hpp"

#include <optional>
#include <ostream>
#include <string>

namespace tallowen {

inline std::string printedSeconds(Date date) { return std::to_string(date.secondsSinceReferenceDate); }

// Readable failure messages for GoogleTest, found by argument-dependent lookup.
inline void PrintTo(const UsageEvent& event, std::ostream* out) {
    *out << "{date " << printedSeconds(event.date) << ", in " << event.inputTokens << ", out "
         << event.outputTokens << ", " << event.costCents << " cents, " << event.waterMilliliters << " ml}";
}

inline void PrintTo(const QuotaSnapshot& quota, std::ostream* out) {
    const auto optional = [out](const auto& value) {
        if (value) *out << *value;
        else *out << "none";
    };
    *out << "{at " << printedSeconds(quota.at) << ", primary ";
    optional(quota.primaryPercent);
    *out << " reset ";
    optional(quota.primaryResetAt ? std::optional<std::string>(printedSeconds(*quota.primaryResetAt)) : std::nullopt);
    *out << ", secondary ";
    optional(quota.secondaryPercent);
    *out << " reset ";
    optional(quota.secondaryResetAt ? std::optional<std::string>(printedSeconds(*quota.secondaryResetAt))
                                    : std::nullopt);
    *out << ", plan ";
    optional(quota.plan);
    *out << "}";
}

}  // namespace tallowen
