#include "import/ImportStateCodec.hpp"

#include "base/JsonRead.hpp"
#include "base/JsonWriter.hpp"

namespace tallowen {
namespace {

void writeQuota(JsonWriter& w, const QuotaSnapshot& quota) {
    w.beginObject();
    w.key("at").number(quota.at.secondsSinceReferenceDate);
    if (quota.primaryPercent) w.key("primaryPercent").number(*quota.primaryPercent);
    if (quota.primaryResetAt) w.key("primaryResetAt").number(quota.primaryResetAt->secondsSinceReferenceDate);
    if (quota.secondaryPercent) w.key("secondaryPercent").number(*quota.secondaryPercent);
    if (quota.secondaryResetAt)
        w.key("secondaryResetAt").number(quota.secondaryResetAt->secondsSinceReferenceDate);
    if (quota.plan) w.key("plan").string(*quota.plan);
    w.endObject();
}

void writeDayUsage(JsonWriter& w, const DayUsage& day) {
    w.beginObject();
    w.key("sessions").beginArray();
    for (const auto& session : day.sessions) w.string(session);
    w.endArray();
    w.key("requests").integer(day.requests);
    w.key("inputTokens").integer(day.inputTokens);
    w.key("outputTokens").integer(day.outputTokens);
    w.key("episodeHours").beginArray();
    for (const int64_t hour : day.episodeHours) w.integer(hour);
    w.endArray();
    w.key("costCents").integer(day.costCents);
    w.key("waterMilliliters").integer(day.waterMilliliters);
    if (day.quota) {
        w.key("quota");
        writeQuota(w, *day.quota);
    }
    w.endObject();
}

using json::Element;

// Optional keys may be missing, but a key that is present must have its type.
template <typename T, typename Read>
bool readOptional(Element object, std::string_view key, std::optional<T>& out, Read read) {
    auto value = json::member(object, key);
    if (!value || value->is_null()) return true;
    auto parsed = read(object, key);
    if (!parsed) return false;
    out = T(*parsed);
    return true;
}

std::optional<QuotaSnapshot> readQuota(Element object) {
    if (!object.is_object()) return std::nullopt;
    QuotaSnapshot quota;
    const auto at = json::doubleMember(object, "at");
    if (!at) return std::nullopt;
    quota.at = Date{*at};
    std::optional<double> primaryReset, secondaryReset;
    if (!readOptional(object, "primaryPercent", quota.primaryPercent, json::doubleMember) ||
        !readOptional(object, "primaryResetAt", primaryReset, json::doubleMember) ||
        !readOptional(object, "secondaryPercent", quota.secondaryPercent, json::doubleMember) ||
        !readOptional(object, "secondaryResetAt", secondaryReset, json::doubleMember) ||
        !readOptional(object, "plan", quota.plan, json::stringMember))
        return std::nullopt;
    if (primaryReset) quota.primaryResetAt = Date{*primaryReset};
    if (secondaryReset) quota.secondaryResetAt = Date{*secondaryReset};
    return quota;
}

bool readIntegerArray(Element object, std::string_view key, std::vector<int64_t>& out) {
    auto value = json::member(object, key);
    if (!value || !value->is_array()) return false;
    // Held in a variable: ranging over the temporary result would read it after its end.
    const simdjson::dom::array items = value->get_array().value_unsafe();
    for (Element item : items) {
        if (item.type() != simdjson::dom::element_type::INT64) return false;
        out.push_back(item.get_int64().value_unsafe());
    }
    return true;
}

std::optional<DayUsage> readDayUsage(Element object) {
    if (!object.is_object()) return std::nullopt;
    DayUsage day;
    auto sessions = json::member(object, "sessions");
    if (!sessions || !sessions->is_array()) return std::nullopt;
    const simdjson::dom::array sessionItems = sessions->get_array().value_unsafe();
    for (Element item : sessionItems) {
        if (!item.is_string()) return std::nullopt;
        day.sessions.emplace(item.get_string().value_unsafe());
    }
    const auto requests = json::int64Member(object, "requests");
    const auto input = json::int64Member(object, "inputTokens");
    const auto output = json::int64Member(object, "outputTokens");
    const auto cost = json::int64Member(object, "costCents");
    const auto water = json::int64Member(object, "waterMilliliters");
    if (!requests || !input || !output || !cost || !water) return std::nullopt;
    if (!readIntegerArray(object, "episodeHours", day.episodeHours)) return std::nullopt;
    day.requests = *requests;
    day.inputTokens = *input;
    day.outputTokens = *output;
    day.costCents = *cost;
    day.waterMilliliters = *water;
    if (auto quota = json::member(object, "quota"); quota && !quota->is_null()) {
        day.quota = readQuota(*quota);
        if (!day.quota) return std::nullopt;
    }
    return day;
}

std::optional<FileEntry> readFileEntry(Element object) {
    FileEntry entry;
    const auto size = json::int64Member(object, "size");
    const auto modified = json::doubleMember(object, "modified");
    const auto days = json::objectMember(object, "days");
    if (!size || !modified || !days) return std::nullopt;
    entry.size = *size;
    entry.modified = Date{*modified};
    const simdjson::dom::object dayObjects = days->get_object().value_unsafe();
    for (auto [key, value] : dayObjects) {
        auto day = readDayUsage(value);
        if (!day) return std::nullopt;
        entry.days[std::string(key)] = std::move(*day);
    }
    return entry;
}

}  // namespace

std::string encodeImportState(const ImportState& state) {
    JsonWriter w;
    w.beginObject();
    w.key("version").integer(state.version);
    w.key("files").beginObject();
    for (const auto& [path, entry] : state.files) {
        w.key(path).beginObject();
        w.key("size").integer(entry.size);
        w.key("modified").number(entry.modified.secondsSinceReferenceDate);
        w.key("days").beginObject();
        for (const auto& [key, day] : entry.days) {
            w.key(key);
            writeDayUsage(w, day);
        }
        w.endObject();
        w.endObject();
    }
    w.endObject();
    w.endObject();
    return w.take();
}

std::optional<ImportState> decodeImportState(std::string_view text) {
    simdjson::dom::parser parser;
    Element root;
    if (parser.parse(text.data(), text.size(), true).get(root) != simdjson::SUCCESS) return std::nullopt;
    const auto version = json::int64Member(root, "version");
    const auto files = json::objectMember(root, "files");
    if (!version || !files || *version != ImportState::currentVersion) return std::nullopt;
    ImportState state;
    const simdjson::dom::object fileObjects = files->get_object().value_unsafe();
    for (auto [path, value] : fileObjects) {
        if (!value.is_object()) return std::nullopt;
        auto entry = readFileEntry(value);
        if (!entry) return std::nullopt;
        state.files[std::string(path)] = std::move(*entry);
    }
    return state;
}

}  // namespace tallowen
