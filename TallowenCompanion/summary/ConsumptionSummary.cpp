#include "summary/ConsumptionSummary.hpp"

#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"
#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>

namespace tallowen {
namespace {

bool isComputerSideSample(const UsageSample& sample) {
    const std::optional<UsageTool> tool = usageToolFromRawValue(sample.tool);
    return tool && isComputerSide(*tool);
}

// The key of the oldest day of the unbroken stretch that ends with the newest
// measured day: the walk stops at the first pause longer than thirty days,
// measured in seconds between day starts, or at a key that is not a date.
std::string_view reliableStartKey(std::vector<std::string_view> activeKeys, const LocalCalendar& calendar) {
    std::sort(activeKeys.begin(), activeKeys.end());
    activeKeys.erase(std::unique(activeKeys.begin(), activeKeys.end()), activeKeys.end());
    size_t candidate = activeKeys.size() - 1;
    while (candidate > 0) {
        const std::optional<Date> candidateStart = dateOfDayKey(activeKeys[candidate], calendar);
        const std::optional<Date> olderStart = dateOfDayKey(activeKeys[candidate - 1], calendar);
        if (!candidateStart || !olderStart) break;
        if (candidateStart->secondsSince(*olderStart) > reliableStretchGapSeconds) break;
        --candidate;
    }
    return activeKeys[candidate];
}

}  // namespace

ConsumptionSummary computeConsumptionSummary(const std::vector<UsageSample>& samples, int days, Date now,
                                             const LocalCalendar& calendar) {
    days = std::max(days, 1);
    std::vector<const UsageSample*> computerSide;
    for (const UsageSample& sample : samples)
        if (isComputerSideSample(sample)) computerSide.push_back(&sample);
    const std::vector<const UsageSample*> kept = oneSamplePerSlot(computerSide);

    ConsumptionSummary summary;
    summary.hasMacData = !kept.empty();
    if (kept.empty()) return summary;

    const Date todayStart = calendar.startOfDay(now);
    const std::string todayKey = dayKey(todayStart, calendar);
    const Date windowStart = calendar.startOfDayAdding(todayStart, -(days - 1)).value_or(todayStart);
    const std::string windowKey = dayKey(windowStart, calendar);
    const Date previousWindowStart = calendar.startOfDayAdding(windowStart, -days).value_or(windowStart);
    const std::string previousWindowKey = dayKey(previousWindowStart, calendar);

    std::unordered_set<std::string_view> measuredDayKeys;
    std::unordered_set<std::string_view> pastWaterDayKeys;
    std::vector<std::string_view> activeKeys;
    for (const UsageSample* sample : kept) {
        const std::string_view key = sample->dayKey;
        const int64_t tokens = sample->totalTokens();
        if (tokens >= 1) activeKeys.push_back(key);
        if (key >= previousWindowKey && key < windowKey)
            addChecked(summary.previousWindowWaterMilliliters, sample->estimatedWaterMilliliters);
        // The window is open towards the future: a day after today still counts.
        if (key < windowKey) continue;
        addChecked(summary.totalTokens, tokens);
        addChecked(summary.totalCostCents, sample->estimatedCostCents);
        addChecked(summary.totalWaterMilliliters, sample->estimatedWaterMilliliters);
        if (tokens >= 1) measuredDayKeys.insert(key);
        if (key == todayKey) {
            addChecked(summary.todayWaterMilliliters, sample->estimatedWaterMilliliters);
        } else if (sample->estimatedWaterMilliliters >= 1) {
            pastWaterDayKeys.insert(key);
        }
    }
    summary.measuredDays = static_cast<int64_t>(measuredDayKeys.size());

    if (!activeKeys.empty()) {
        const std::string_view startKey = reliableStartKey(std::move(activeKeys), calendar);
        summary.reliableSince = dateOfDayKey(startKey, calendar);
        for (const UsageSample* sample : kept)
            if (sample->dayKey >= startKey) addChecked(summary.allTimeWaterMilliliters, sample->estimatedWaterMilliliters);
    }

    // Today never raises its own reference.
    if (!pastWaterDayKeys.empty()) {
        summary.dayReferenceMilliliters =
            checkedSubtract(summary.totalWaterMilliliters, summary.todayWaterMilliliters) /
            static_cast<int64_t>(pastWaterDayKeys.size());
    }

    summary.quotas = latestFreshQuotas(kept, now);
    std::stable_sort(summary.quotas.begin(), summary.quotas.end(),
                     [](const ToolQuota& a, const ToolQuota& b) { return displayLabelLess(a.tool, b.tool); });
    const bool claudeCodeHasSamples = std::any_of(kept.begin(), kept.end(), [](const UsageSample* sample) {
        return sample->tool == rawValue(UsageTool::claudeCode);
    });
    const bool claudeCodeHasQuota = std::any_of(summary.quotas.begin(), summary.quotas.end(),
                                                [](const ToolQuota& quota) { return quota.tool == UsageTool::claudeCode; });
    summary.hasClaudeCodeWithoutQuota = claudeCodeHasSamples && !claudeCodeHasQuota;
    return summary;
}

}  // namespace tallowen
