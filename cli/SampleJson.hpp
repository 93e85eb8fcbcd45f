#pragma once

#include "import/ImportState.hpp"
#include "model/JsonWriter.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"

#include <string_view>

namespace tallowen::cli {

// The sample that one tool's day stands for: the session set counted, cost and
// water under their stored names, the quota's values when the day holds one.
UsageSample sampleOfDay(std::string_view dayKey, UsageTool tool, const DayUsage& day);

// One sample as a JSON object under its stored field names: dayKey, tool,
// sessions, requests, inputTokens, outputTokens, episodeHours,
// estimatedCostCents, estimatedWaterMilliliters, then the quota fields that
// are present (dates as ISO 8601 text in UTC) and, when asked, updatedAt.
void writeSampleJson(JsonWriter& json, const UsageSample& sample, bool withUpdatedAt);

}  // namespace tallowen::cli
