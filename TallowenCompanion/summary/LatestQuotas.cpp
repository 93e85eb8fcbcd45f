#include "summary/LatestQuotas.hpp"

#include <array>
#include <optional>

namespace tallowen {

std::vector<ToolQuota> latestFreshQuotas(const std::vector<const UsageSample*>& samples, Date now) {
    std::array<const UsageSample*, allUsageTools.size()> latest{};
    for (const UsageSample* sample : samples) {
        if (!sample->hasQuota()) continue;
        const std::optional<UsageTool> tool = usageToolFromRawValue(sample->tool);
        if (!tool) continue;
        const UsageSample*& held = latest[static_cast<size_t>(*tool)];
        // Samples are met newest day first: one import stamps all its samples
        // with the same `updatedAt`, and the tie must then go to the most recent reading.
        if (held == nullptr || sample->updatedAt > held->updatedAt ||
            (sample->updatedAt == held->updatedAt && sample->dayKey > held->dayKey))
            held = sample;
    }
    const Date oldestShown = now.addingSeconds(-quotaFreshnessSeconds);
    std::vector<ToolQuota> quotas;
    for (const UsageTool tool : allUsageTools) {
        const UsageSample* held = latest[static_cast<size_t>(tool)];
        if (held != nullptr && !(held->updatedAt < oldestShown)) quotas.push_back(ToolQuota{tool, *held});
    }
    return quotas;
}

std::vector<ToolQuota> latestFreshQuotas(const std::vector<UsageSample>& samples, Date now) {
    std::vector<const UsageSample*> all;
    all.reserve(samples.size());
    for (const UsageSample& sample : samples) all.push_back(&sample);
    return latestFreshQuotas(all, now);
}

}  // namespace tallowen
