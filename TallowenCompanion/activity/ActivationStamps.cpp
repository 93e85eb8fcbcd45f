#include "activity/ActivationStamps.hpp"

#include "base/JsonRead.hpp"
#include "base/JsonWriter.hpp"

#include <algorithm>

namespace tallowen {

bool addActivationStamp(ActivationStamps& stamps, const std::string& bundleId, Date now) {
    std::vector<Date>& dates = stamps[bundleId];
    if (!dates.empty() && now.secondsSince(dates.back()) < activationRepeatSeconds) return false;
    const Date cutOff = now.addingSeconds(-activationRetentionSeconds);
    dates.erase(std::remove_if(dates.begin(), dates.end(), [cutOff](Date date) { return !(date > cutOff); }),
                dates.end());
    dates.push_back(now);
    return true;
}

std::string encodeActivationStamps(const ActivationStamps& stamps) {
    JsonWriter w;
    w.beginObject();
    for (const auto& [bundleId, dates] : stamps) {
        w.key(bundleId).beginArray();
        for (const Date date : dates) w.number(date.secondsSinceReferenceDate);
        w.endArray();
    }
    w.endObject();
    return w.take();
}

std::optional<ActivationStamps> decodeActivationStamps(std::string_view text) {
    simdjson::dom::parser parser;
    json::Element root;
    if (parser.parse(text.data(), text.size(), true).get(root) != simdjson::SUCCESS) return std::nullopt;
    if (!root.is_object()) return std::nullopt;
    ActivationStamps stamps;
    // Held by value: ranging over value_unsafe() of a temporary result would dangle.
    const simdjson::dom::object applications = root.get_object().value_unsafe();
    for (auto [bundleId, value] : applications) {
        if (!value.is_array()) return std::nullopt;
        std::vector<Date> dates;
        const simdjson::dom::array items = value.get_array().value_unsafe();
        for (json::Element item : items) {
            double seconds = 0;
            if (!item.is_number() || item.get_double().get(seconds) != simdjson::SUCCESS) return std::nullopt;
            dates.push_back(Date{seconds});
        }
        stamps[std::string(bundleId)] = std::move(dates);
    }
    return stamps;
}

}  // namespace tallowen
