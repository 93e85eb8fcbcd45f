#pragma once

#include "model/UsageSample.hpp"

#include <string>
#include <utility>

namespace tallowen::testing {

// A stored sample of one tool on one day, filled field by field.
struct SampleBuilder {
    UsageSample sample;

    SampleBuilder(std::string dayKey, std::string tool) {
        sample.dayKey = std::move(dayKey);
        sample.tool = std::move(tool);
    }
    SampleBuilder& requests(int64_t count) { sample.requests = count; return *this; }
    SampleBuilder& tokens(int64_t input, int64_t output = 0) { sample.inputTokens = input; sample.outputTokens = output; return *this; }
    SampleBuilder& water(int64_t milliliters) { sample.estimatedWaterMilliliters = milliliters; return *this; }
    SampleBuilder& cost(int64_t cents) { sample.estimatedCostCents = cents; return *this; }
    SampleBuilder& updatedAt(Date date) { sample.updatedAt = date; return *this; }
    SampleBuilder& id(std::string persistentId) { sample.persistentId = std::move(persistentId); return *this; }
    SampleBuilder& primaryQuota(double percent) { sample.quotaPrimaryPercent = percent; return *this; }
    SampleBuilder& secondaryQuota(double percent) { sample.quotaSecondaryPercent = percent; return *this; }
    operator UsageSample() const { return sample; }
};

}  // namespace tallowen::testing
