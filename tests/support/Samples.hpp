#pragma once

#include "model/UsageSample.hpp"

#include <string>
#include <tuple>

namespace tallowen::testing {

// Every stored field of a sample, its identifier aside, for comparisons.
inline auto storedFields(const UsageSample& s) {
    return std::tie(s.dayKey, s.tool, s.sessions, s.requests, s.inputTokens, s.outputTokens, s.episodeHours,
                    s.estimatedCostCents, s.estimatedWaterMilliliters, s.quotaPrimaryPercent, s.quotaPrimaryResetAt,
                    s.quotaSecondaryPercent, s.quotaSecondaryResetAt, s.quotaPlan, s.updatedAt);
}

inline UsageSample slotSample(std::string dayKey, std::string tool, Date updatedAt, int64_t requests = 0) {
    UsageSample sample = UsageSample::created(updatedAt);
    sample.dayKey = std::move(dayKey);
    sample.tool = std::move(tool);
    sample.requests = requests;
    return sample;
}

}  // namespace tallowen::testing
