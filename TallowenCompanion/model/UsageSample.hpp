#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// The stored record of one tool on one day, field for field as the
// synchronised store and the phone know it. `persistentId` is the store's own
// identifier printed as text; it is empty until the record has been stored.
struct UsageSample {
    std::string dayKey;
    std::string tool;
    int64_t sessions = 0;
    int64_t requests = 0;
    int64_t inputTokens = 0;
    int64_t outputTokens = 0;
    std::vector<int64_t> episodeHours;
    int64_t estimatedCostCents = 0;
    int64_t estimatedWaterMilliliters = 0;
    std::optional<double> quotaPrimaryPercent;
    std::optional<Date> quotaPrimaryResetAt;
    std::optional<double> quotaSecondaryPercent;
    std::optional<Date> quotaSecondaryResetAt;
    std::optional<std::string> quotaPlan;
    Date updatedAt;

    std::string persistentId;

    // A record as the store creates it: every default, stamped with its creation time.
    static UsageSample created(Date now) {
        UsageSample sample;
        sample.updatedAt = now;
        return sample;
    }

    bool hasQuota() const { return quotaPrimaryPercent.has_value() || quotaSecondaryPercent.has_value(); }
    int64_t totalTokens() const;
};

}  // namespace tallowen
