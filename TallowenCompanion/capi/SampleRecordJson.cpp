#include "capi/SampleRecordJson.hpp"

#include "base/JsonRead.hpp"
#include "base/JsonWriter.hpp"

namespace tallowen::capi {
namespace {

using json::Element;

void writeOptionalNumber(JsonWriter& out, std::string_view key, const std::optional<double>& value) {
    out.key(key);
    if (value) out.number(*value);
    else out.null();
}

void writeOptionalDate(JsonWriter& out, std::string_view key, const std::optional<Date>& date) {
    writeOptionalNumber(out, key, date ? std::optional<double>(date->secondsSinceReferenceDate) : std::nullopt);
}

void writeSample(JsonWriter& out, const UsageSample& sample) {
    out.beginObject();
    out.key("id").string(sample.persistentId);
    out.key("dayKey").string(sample.dayKey);
    out.key("tool").string(sample.tool);
    out.key("sessions").integer(sample.sessions);
    out.key("requests").integer(sample.requests);
    out.key("inputTokens").integer(sample.inputTokens);
    out.key("outputTokens").integer(sample.outputTokens);
    out.key("episodeHours").beginArray();
    for (const int64_t hour : sample.episodeHours) out.integer(hour);
    out.endArray();
    out.key("estimatedCostCents").integer(sample.estimatedCostCents);
    out.key("estimatedWaterMilliliters").integer(sample.estimatedWaterMilliliters);
    writeOptionalNumber(out, "quotaPrimaryPercent", sample.quotaPrimaryPercent);
    writeOptionalDate(out, "quotaPrimaryResetAt", sample.quotaPrimaryResetAt);
    writeOptionalNumber(out, "quotaSecondaryPercent", sample.quotaSecondaryPercent);
    writeOptionalDate(out, "quotaSecondaryResetAt", sample.quotaSecondaryResetAt);
    out.key("quotaPlan");
    if (sample.quotaPlan) out.string(*sample.quotaPlan);
    else out.null();
    out.key("updatedAt").number(sample.updatedAt.secondsSinceReferenceDate);
    out.endObject();
}

[[noreturn]] void malformed(std::string_view what) {
    throw StoreError("réponse du store illisible (" + std::string(what) + ")");
}

std::string requiredText(Element object, std::string_view key) {
    const auto text = json::stringMember(object, key);
    if (!text) malformed(key);
    return std::string(*text);
}

int64_t integerOrZero(Element object, std::string_view key) {
    if (!json::member(object, key)) return 0;
    const auto value = json::int64Member(object, key);
    if (!value) malformed(key);
    return *value;
}

// Absent and null both mean "no value"; anything else must be a number.
std::optional<double> optionalNumber(Element object, std::string_view key) {
    const auto value = json::member(object, key);
    if (!value || value->is_null()) return std::nullopt;
    const auto number = json::doubleMember(object, key);
    if (!number) malformed(key);
    return number;
}

std::optional<Date> optionalDate(Element object, std::string_view key) {
    const auto seconds = optionalNumber(object, key);
    if (!seconds) return std::nullopt;
    return Date{*seconds};
}

UsageSample sampleOf(Element object) {
    if (!object.is_object()) malformed("sample");
    UsageSample sample;
    if (const auto id = json::stringMember(object, "id")) sample.persistentId = std::string(*id);
    sample.dayKey = requiredText(object, "dayKey");
    sample.tool = requiredText(object, "tool");
    sample.sessions = integerOrZero(object, "sessions");
    sample.requests = integerOrZero(object, "requests");
    sample.inputTokens = integerOrZero(object, "inputTokens");
    sample.outputTokens = integerOrZero(object, "outputTokens");
    if (const auto hours = json::member(object, "episodeHours"); hours && !hours->is_null()) {
        simdjson::dom::array items;
        if (hours->get_array().get(items) != simdjson::SUCCESS) malformed("episodeHours");
        for (const Element item : items) {
            int64_t hour = 0;
            if (item.get_int64().get(hour) != simdjson::SUCCESS) malformed("episodeHours");
            sample.episodeHours.push_back(hour);
        }
    }
    sample.estimatedCostCents = integerOrZero(object, "estimatedCostCents");
    sample.estimatedWaterMilliliters = integerOrZero(object, "estimatedWaterMilliliters");
    sample.quotaPrimaryPercent = optionalNumber(object, "quotaPrimaryPercent");
    sample.quotaPrimaryResetAt = optionalDate(object, "quotaPrimaryResetAt");
    sample.quotaSecondaryPercent = optionalNumber(object, "quotaSecondaryPercent");
    sample.quotaSecondaryResetAt = optionalDate(object, "quotaSecondaryResetAt");
    if (const auto plan = json::member(object, "quotaPlan"); plan && !plan->is_null())
        sample.quotaPlan = requiredText(object, "quotaPlan");
    const auto updatedAt = optionalNumber(object, "updatedAt");
    if (!updatedAt) malformed("updatedAt");
    sample.updatedAt = Date{*updatedAt};
    return sample;
}

template <typename Read>
void forEachItem(std::string_view text, const Read& read) {
    simdjson::dom::parser parser;
    Element root;
    if (parser.parse(text.data(), text.size(), true).get(root) != simdjson::SUCCESS) malformed("JSON");
    simdjson::dom::array items;
    if (root.get_array().get(items) != simdjson::SUCCESS) malformed("array");
    for (const Element item : items) read(item);
}

}  // namespace

std::string sampleRecordJson(const UsageSample& sample) {
    JsonWriter out;
    writeSample(out, sample);
    return out.take();
}

std::string sampleRecordsJson(const std::vector<UsageSample>& samples) {
    JsonWriter out;
    out.beginArray();
    for (const UsageSample& sample : samples) writeSample(out, sample);
    out.endArray();
    return out.take();
}

UsageSample parseSampleRecord(std::string_view text) {
    simdjson::dom::parser parser;
    Element root;
    if (parser.parse(text.data(), text.size(), true).get(root) != simdjson::SUCCESS) malformed("JSON");
    return sampleOf(root);
}

std::vector<UsageSample> parseSampleRecords(std::string_view text) {
    std::vector<UsageSample> samples;
    forEachItem(text, [&](Element item) { samples.push_back(sampleOf(item)); });
    return samples;
}

std::vector<SampleSlot> parseSampleSlots(std::string_view text) {
    std::vector<SampleSlot> slots;
    forEachItem(text, [&](Element item) {
        if (!item.is_object()) malformed("slot");
        slots.push_back(SampleSlot{requiredText(item, "dayKey"), requiredText(item, "tool")});
    });
    return slots;
}

}  // namespace tallowen::capi
