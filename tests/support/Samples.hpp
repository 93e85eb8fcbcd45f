#pragma once

#include "model/UsageSample.hpp"

#include <string>
#include <tuple>
#include <vector>

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

// The sample with that identifier, or a default one tagged "missing".
inline UsageSample withId(const std::vector<UsageSample>& samples, const std::string& persistentId) {
    for (const auto& sample : samples)
        if (sample.persistentId == persistentId) return sample;
    return slotSample("missing", "missing", Date{});
}

}  // namespace tallowen::testing
