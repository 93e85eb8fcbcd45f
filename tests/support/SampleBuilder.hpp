#pragma once

#include "model/UsageSample.hpp"

#include <string>
#include <utility>

namespace tallowen::testing {

// A stored sample of one tool on one day, filled field by field.
class SampleBuilder {
public:
    SampleBuilder(std::string dayKey, std::string tool) {
        sample_.dayKey = std::move(dayKey);
        sample_.tool = std::move(tool);
    }
    SampleBuilder& tokens(int64_t input, int64_t output = 0) {
        sample_.inputTokens = input;
        sample_.outputTokens = output;
        return *this;
    }
    SampleBuilder& water(int64_t milliliters) {
        sample_.estimatedWaterMilliliters = milliliters;
        return *this;
    }
    SampleBuilder& cost(int64_t cents) {
        sample_.estimatedCostCents = cents;
        return *this;
    }
    SampleBuilder& updatedAt(Date date) {
        sample_.updatedAt = date;
        return *this;
    }
    SampleBuilder& id(std::string persistentId) {
        sample_.persistentId = std::move(persistentId);
        return *this;
    }
    SampleBuilder& primaryQuota(double percent) {
        sample_.quotaPrimaryPercent = percent;
        return *this;
    }
    SampleBuilder& secondaryQuota(double percent) {
        sample_.quotaSecondaryPercent = percent;
        return *this;
    }
    operator UsageSample() const { return sample_; }

private:
    UsageSample sample_;
};

}  // namespace tallowen::testing
