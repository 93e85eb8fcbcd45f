#pragma once

#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// What a history counts per day and tool.
enum class HistoryMetric { tokens, requests, water, cost };

// "tokens", "requests", "water", "cost"; nothing for any other name.
std::optional<HistoryMetric> historyMetricNamed(std::string_view name);
std::string_view historyMetricName(HistoryMetric metric);

// The metric's figure of one sample: input plus output tokens, requests,
// millilitres of water or cents.
int64_t historyValue(const UsageSample& sample, HistoryMetric metric);

struct HistoryDay {
    std::string dayKey;
    // One value per tool of the history, in the same order; zeros on a day without use.
    std::vector<int64_t> toolValues;
    int64_t total = 0;
};

// The days of a history, oldest first, each split by tool.
struct UsageHistory {
    HistoryMetric metric = HistoryMetric::tokens;
    // The known tools with a non-zero figure somewhere in the range, in their fixed order.
    std::vector<UsageTool> tools;
    // Every day of the range, used or not, so that gaps show.
    std::vector<HistoryDay> days;
    // Each tool's total over the range, in the order of `tools`.
    std::vector<int64_t> toolTotals;
    // The largest day total (0 when nothing was used).
    int64_t largestDayTotal = 0;
};

// The days a history covers, both included.
struct HistoryRange {
    std::string firstDayKey;
    std::string lastDayKey;
};

inline constexpr int64_t historyDefaultDays = 14;

// The range a person asks for: it ends on `until` (default today) and begins
// on `since`, else `days` days before its end counted inclusively (default
// 14). Nothing, with `error` set to a one-line reason, when a day is not
// written YYYY-MM-DD, `days` is not a whole number from 1 on, both `days` and
// `since` are given, or the range ends before it begins.
std::optional<HistoryRange> historyRange(const std::optional<std::string>& days,
                                         const std::optional<std::string>& since,
                                         const std::optional<std::string>& until, Date now,
                                         const LocalCalendar& calendar, std::string& error);

// The day keys from `first` to `last`, both included, in day order; empty
// when a key does not parse or `last` comes before `first`.
std::vector<std::string> dayKeysFromTo(std::string_view first, std::string_view last, const LocalCalendar& calendar);

// The history of `dayKeys` from the stored samples, one sample per day and
// tool as for display. Samples of other days and of tools unknown to this
// version are left out. Sums are checked.
UsageHistory usageHistory(const std::vector<UsageSample>& samples, const std::vector<std::string>& dayKeys,
                          HistoryMetric metric);

// The history as one JSON object: the metric, the range, the tools' raw
// values and totals, and per day its total and each tool's figure.
std::string usageHistoryJson(const UsageHistory& history);

}  // namespace tallowen
