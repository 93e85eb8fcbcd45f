#pragma once

#include "model/Date.hpp"
#include "model/UsageTool.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tallowen {

// A rate-limit reading reported with a tool's usage.
struct QuotaSnapshot {
    Date at;
    std::optional<double> primaryPercent;
    std::optional<Date> primaryResetAt;
    std::optional<double> secondaryPercent;
    std::optional<Date> secondaryResetAt;
    std::optional<std::string> plan;

    friend bool operator==(const QuotaSnapshot&, const QuotaSnapshot&) = default;
};

// What one source contributed to one local day.
struct DayUsage {
    std::set<std::string> sessions;
    int64_t requests = 0;
    int64_t inputTokens = 0;
    int64_t outputTokens = 0;
    std::vector<int64_t> episodeHours;
    int64_t costCents = 0;
    int64_t waterMilliliters = 0;
    std::optional<QuotaSnapshot> quota;

    friend bool operator==(const DayUsage&, const DayUsage&) = default;
};

// Day key to that day's usage.
using DayMap = std::map<std::string, DayUsage>;
// Per tool, its day map summed over all of its sources.
using ToolResults = std::map<UsageTool, DayMap>;

// Adds `from` into `into`: sessions united, counts added (checked), hours
// appended, and of two quotas the one taken later kept.
void mergeDayUsage(DayUsage& into, const DayUsage& from);
void mergeDayMap(DayMap& into, const DayMap& from);
// Keeps `candidate` when nothing is held or it was taken strictly later.
void keepLaterQuota(std::optional<QuotaSnapshot>& held, const QuotaSnapshot& candidate);

}  // namespace tallowen
