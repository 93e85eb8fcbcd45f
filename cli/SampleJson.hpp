#pragma once

#include "base/JsonWriter.hpp"
#include "model/UsageSample.hpp"

namespace tallowen::cli {

// One sample as a JSON object under its stored field names: dayKey, tool,
// sessions, requests, inputTokens, outputTokens, episodeHours,
// estimatedCostCents, estimatedWaterMilliliters, then the quota fields that
// are present (dates as ISO 8601 text in UTC) and, when asked, updatedAt.
void writeSampleJson(JsonWriter& json, const UsageSample& sample, bool withUpdatedAt);

}  // namespace tallowen::cli
