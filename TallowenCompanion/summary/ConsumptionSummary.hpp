#pragma once

#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"
#include "summary/LatestQuotas.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace tallowen {

// What the menu shows about this computer's own use, folded from the stored
// samples over a trailing window of days. Computed afresh on every redraw.
struct ConsumptionSummary {
    // Input plus output tokens of the window's samples.
    int64_t totalTokens = 0;
    int64_t totalCostCents = 0;
    // Distinct days of the window with at least one token.
    int64_t measuredDays = 0;
    int64_t totalWaterMilliliters = 0;
    // Water of every sample from `reliableSince` on.
    int64_t allTimeWaterMilliliters = 0;
    // First day of the current unbroken stretch of measured days.
    std::optional<Date> reliableSince;
    int64_t todayWaterMilliliters = 0;
    // Water of the equally long window just before the current one.
    int64_t previousWindowWaterMilliliters = 0;
    // Usual water of a measured day, today excluded.
    int64_t dayReferenceMilliliters = 0;
    // Per tool, latest quota figures no older than eight days, by display label.
    std::vector<ToolQuota> quotas;
    // Claude Code has samples but no entry in `quotas`.
    bool hasClaudeCodeWithoutQuota = false;
    // At least one sample of a computer-side tool exists.
    bool hasMacData = false;
};

// Folds `samples` over the window of `days` days ending with the day of `now`
// (today and the days - 1 before it; the window has no upper bound). Only the
// computer-side tools count, one sample per (day, tool). `days` below 1 is
// taken as 1. Pure: nothing is written.
ConsumptionSummary computeConsumptionSummary(const std::vector<UsageSample>& samples, int days, Date now,
                                             const LocalCalendar& calendar);

// The longest pause between two measured days that keeps a stretch unbroken.
inline constexpr double reliableStretchGapSeconds = 2592000.0;  // 30 days

}  // namespace tallowen
