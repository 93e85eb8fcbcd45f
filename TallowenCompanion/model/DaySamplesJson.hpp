#pragma once

#include "base/JsonWriter.hpp"
#include "model/UsageSample.hpp"

#include <string>
#include <vector>

namespace tallowen {

// One sample as a JSON object under its stored field names: dayKey, tool,
// sessions, requests, inputTokens, outputTokens, episodeHours,
// estimatedCostCents, estimatedWaterMilliliters, then the quota fields that
// are present (dates as ISO 8601 text in UTC) and, when asked, updatedAt.
void writeDaySampleJson(JsonWriter& json, const UsageSample& sample, bool withUpdatedAt);

// Stored samples: {"samples":[…]}, each with its updatedAt.
std::string daySamplesJson(const std::vector<UsageSample>& samples);

}  // namespace tallowen
