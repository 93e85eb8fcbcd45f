#include "model/DaySamplesJson.hpp"

#include "model/Iso8601Format.hpp"

#include <optional>
#include <string>

namespace tallowen {
namespace {

void writeDate(JsonWriter& json, std::string_view key, const std::optional<Date>& date) {
    if (!date) return;
    // A date too far off to be written as text is left out like an absent one.
    if (const auto text = iso8601UtcText(*date)) json.key(key).string(*text);
}

}  // namespace

void writeDaySampleJson(JsonWriter& json, const UsageSample& sample, bool withUpdatedAt) {
    json.beginObject();
    json.key("dayKey").string(sample.dayKey);
    json.key("tool").string(sample.tool);
    json.key("sessions").integer(sample.sessions);
    json.key("requests").integer(sample.requests);
    json.key("inputTokens").integer(sample.inputTokens);
    json.key("outputTokens").integer(sample.outputTokens);
    json.key("episodeHours").beginArray();
    for (const int64_t hour : sample.episodeHours) json.integer(hour);
    json.endArray();
    json.key("estimatedCostCents").integer(sample.estimatedCostCents);
    json.key("estimatedWaterMilliliters").integer(sample.estimatedWaterMilliliters);
    if (sample.quotaPrimaryPercent) json.key("quotaPrimaryPercent").number(*sample.quotaPrimaryPercent);
    writeDate(json, "quotaPrimaryResetAt", sample.quotaPrimaryResetAt);
    if (sample.quotaSecondaryPercent) json.key("quotaSecondaryPercent").number(*sample.quotaSecondaryPercent);
    writeDate(json, "quotaSecondaryResetAt", sample.quotaSecondaryResetAt);
    if (sample.quotaPlan) json.key("quotaPlan").string(*sample.quotaPlan);
    if (withUpdatedAt) writeDate(json, "updatedAt", sample.updatedAt);
    json.endObject();
}

std::string daySamplesJson(const std::vector<UsageSample>& samples) {
    JsonWriter json;
    json.beginObject();
    json.key("samples").beginArray();
    for (const UsageSample& sample : samples) writeDaySampleJson(json, sample, true);
    json.endArray();
    json.endObject();
    return json.take();
}

}  // namespace tallowen
