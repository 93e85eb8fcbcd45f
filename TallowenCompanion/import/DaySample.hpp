#pragma once

#include "model/DayUsage.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"

#include <string_view>
#include <vector>

namespace tallowen {

// Copies a day's figures into its sample: the session set counted, cost and
// water under their stored names, and the quota fields only when the day has a
// quota, each absent value of the snapshot clearing the stored one.
void copyDayIntoSample(UsageSample& sample, const DayUsage& day);

// The sample that one tool's day stands for.
UsageSample sampleOfDay(std::string_view dayKey, UsageTool tool, const DayUsage& day);

// The samples of a run's results, one per day and tool, by day key then tool
// raw value.
std::vector<UsageSample> samplesOfResults(const ToolResults& results);

}  // namespace tallowen
