#include "import/DaySample.hpp"

#include <algorithm>

namespace tallowen {

void copyDayIntoSample(UsageSample& sample, const DayUsage& day) {
    sample.sessions = static_cast<int64_t>(day.sessions.size());
    sample.requests = day.requests;
    sample.inputTokens = day.inputTokens;
    sample.outputTokens = day.outputTokens;
    sample.episodeHours = day.episodeHours;
    sample.estimatedCostCents = day.costCents;
    sample.estimatedWaterMilliliters = day.waterMilliliters;
    if (!day.quota) return;
    sample.quotaPrimaryPercent = day.quota->primaryPercent;
    sample.quotaPrimaryResetAt = day.quota->primaryResetAt;
    sample.quotaSecondaryPercent = day.quota->secondaryPercent;
    sample.quotaSecondaryResetAt = day.quota->secondaryResetAt;
    sample.quotaPlan = day.quota->plan;
}

UsageSample sampleOfDay(std::string_view dayKey, UsageTool tool, const DayUsage& day) {
    UsageSample sample;
    sample.dayKey = dayKey;
    sample.tool = rawValue(tool);
    copyDayIntoSample(sample, day);
    return sample;
}

std::vector<UsageSample> samplesOfResults(const ToolResults& results) {
    std::vector<UsageSample> samples;
    for (const auto& [tool, days] : results)
        for (const auto& [key, day] : days) samples.push_back(sampleOfDay(key, tool, day));
    std::sort(samples.begin(), samples.end(), [](const UsageSample& a, const UsageSample& b) {
        return a.dayKey != b.dayKey ? a.dayKey < b.dayKey : a.tool < b.tool;
    });
    return samples;
}

}  // namespace tallowen
