#include "summary/UsageHistory.hpp"

#include "base/CheckedMath.hpp"
#include "base/JsonWriter.hpp"
#include "model/DayKey.hpp"
#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_map>

namespace tallowen {
namespace {

constexpr std::array<std::pair<std::string_view, HistoryMetric>, 4> metricNames = {{
    {"tokens", HistoryMetric::tokens},
    {"requests", HistoryMetric::requests},
    {"water", HistoryMetric::water},
    {"cost", HistoryMetric::cost},
}};

}  // namespace

std::optional<HistoryMetric> historyMetricNamed(std::string_view name) {
    for (const auto& [text, metric] : metricNames)
        if (text == name) return metric;
    return std::nullopt;
}

std::string_view historyMetricName(HistoryMetric metric) {
    for (const auto& [text, named] : metricNames)
        if (named == metric) return text;
    return "";
}

int64_t historyValue(const UsageSample& sample, HistoryMetric metric) {
    switch (metric) {
        case HistoryMetric::tokens: return checkedAdd(sample.inputTokens, sample.outputTokens);
        case HistoryMetric::requests: return sample.requests;
        case HistoryMetric::water: return sample.estimatedWaterMilliliters;
        case HistoryMetric::cost: return sample.estimatedCostCents;
    }
    return 0;
}

std::optional<HistoryRange> historyRange(const std::optional<std::string>& days,
                                         const std::optional<std::string>& since,
                                         const std::optional<std::string>& until, Date now,
                                         const LocalCalendar& calendar, std::string& error) {
    for (const auto& [name, day] : {std::pair{"--since", since}, std::pair{"--until", until}}) {
        if (day && !isCalendarDayKey(*day, calendar)) {
            error = std::string(name) + " needs a day written YYYY-MM-DD, not " + *day;
            return std::nullopt;
        }
    }
    if (days && since) {
        error = "--days and --since both set where the range begins: give one";
        return std::nullopt;
    }
    int64_t dayCount = historyDefaultDays;
    if (days) {
        const auto [end, failure] = std::from_chars(days->data(), days->data() + days->size(), dayCount);
        // A range beyond a hundred thousand days reaches past any calendar the store can hold.
        if (failure != std::errc() || end != days->data() + days->size() || dayCount < 1 || dayCount > 100000) {
            error = "--days needs a whole number of days from 1 on, not " + *days;
            return std::nullopt;
        }
    }
    HistoryRange range;
    range.lastDayKey = until.value_or(dayKey(now, calendar));
    if (since) {
        range.firstDayKey = *since;
    } else {
        const auto last = dateOfDayKey(range.lastDayKey, calendar);
        const auto first = last ? calendar.startOfDayAdding(*last, -static_cast<int>(dayCount - 1)) : std::nullopt;
        if (!first) {
            error = "--days reaches before any day the calendar can name";
            return std::nullopt;
        }
        range.firstDayKey = dayKey(*first, calendar);
    }
    if (range.firstDayKey > range.lastDayKey) {
        error = "--since " + range.firstDayKey + " comes after --until " + range.lastDayKey;
        return std::nullopt;
    }
    return range;
}

std::vector<std::string> dayKeysFromTo(std::string_view first, std::string_view last, const LocalCalendar& calendar) {
    std::vector<std::string> keys;
    const auto start = dateOfDayKey(first, calendar);
    const auto end = dateOfDayKey(last, calendar);
    if (!start || !end) return keys;
    const std::string lastKey = dayKey(*end, calendar);
    for (int offset = 0;; ++offset) {
        const auto day = calendar.startOfDayAdding(*start, offset);
        if (!day) break;
        std::string key = dayKey(*day, calendar);
        if (key > lastKey) break;
        keys.push_back(std::move(key));
    }
    return keys;
}

UsageHistory usageHistory(const std::vector<UsageSample>& samples, const std::vector<std::string>& dayKeys,
                          HistoryMetric metric) {
    UsageHistory history;
    history.metric = metric;
    std::unordered_map<std::string_view, size_t> dayIndex;
    for (const std::string& key : dayKeys) dayIndex.emplace(key, dayIndex.size());

    // Values per day and per tool of the fixed order, before the unused tools are dropped.
    std::vector<std::array<int64_t, allUsageTools.size()>> grid(dayKeys.size());
    std::array<int64_t, allUsageTools.size()> toolTotals{};
    std::vector<const UsageSample*> all;
    all.reserve(samples.size());
    for (const UsageSample& sample : samples) all.push_back(&sample);
    for (const UsageSample* sample : oneSamplePerSlot(all)) {
        const auto day = dayIndex.find(sample->dayKey);
        const auto tool = usageToolFromRawValue(sample->tool);
        if (day == dayIndex.end() || !tool) continue;
        const auto column = static_cast<size_t>(*tool);
        const int64_t value = historyValue(*sample, metric);
        addChecked(grid[day->second][column], value);
        addChecked(toolTotals[column], value);
    }

    std::vector<size_t> usedColumns;
    for (size_t column = 0; column < allUsageTools.size(); ++column) {
        if (toolTotals[column] == 0) continue;
        usedColumns.push_back(column);
        history.tools.push_back(allUsageTools[column]);
        history.toolTotals.push_back(toolTotals[column]);
    }
    for (size_t index = 0; index < dayKeys.size(); ++index) {
        HistoryDay day{dayKeys[index], {}, 0};
        for (const size_t column : usedColumns) {
            day.toolValues.push_back(grid[index][column]);
            addChecked(day.total, grid[index][column]);
        }
        history.largestDayTotal = std::max(history.largestDayTotal, day.total);
        history.days.push_back(std::move(day));
    }
    return history;
}

std::string usageHistoryJson(const UsageHistory& history) {
    JsonWriter json;
    json.beginObject();
    json.key("metric").string(historyMetricName(history.metric));
    if (!history.days.empty()) {
        json.key("firstDay").string(history.days.front().dayKey);
        json.key("lastDay").string(history.days.back().dayKey);
    }
    json.key("tools").beginArray();
    for (size_t tool = 0; tool < history.tools.size(); ++tool) {
        json.beginObject();
        json.key("tool").string(rawValue(history.tools[tool]));
        json.key("label").string(displayLabel(history.tools[tool]));
        json.key("total").integer(history.toolTotals[tool]);
        json.endObject();
    }
    json.endArray();
    json.key("days").beginArray();
    for (const HistoryDay& day : history.days) {
        json.beginObject();
        json.key("dayKey").string(day.dayKey);
        json.key("total").integer(day.total);
        json.key("tools").beginObject();
        for (size_t tool = 0; tool < history.tools.size(); ++tool)
            json.key(rawValue(history.tools[tool])).integer(day.toolValues[tool]);
        json.endObject();
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

}  // namespace tallowen
