#pragma once

#include "model/Date.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"

#include <vector>

namespace tallowen {

// A tool and the sample that carries its latest quota figures.
struct ToolQuota {
    UsageTool tool = UsageTool::claudeCode;
    UsageSample sample;
};

// How long a quota reading stays worth showing.
inline constexpr double quotaFreshnessSeconds = 691200.0;  // 8 days

// For each known tool, the sample with a quota percent and the latest
// `updatedAt` (a later one replaces the held one only when strictly later, so
// the first met stays on a tie, the samples being met newest day first); a
// tool whose sample is older than
// `now` − 8 days is left out, one exactly 8 days old stays. In the tools'
// fixed order.
std::vector<ToolQuota> latestFreshQuotas(const std::vector<const UsageSample*>& samples, Date now);
std::vector<ToolQuota> latestFreshQuotas(const std::vector<UsageSample>& samples, Date now);

}  // namespace tallowen
