#include "capi/CallbackSettingsStore.hpp"

#include <cmath>

namespace tallowen::capi {

CallbackSettingsStore::~CallbackSettingsStore() {
    if (callbacks_.release != nullptr) callbacks_.release(callbacks_.context);
}

bool CallbackSettingsStore::boolValue(const std::string& key) const {
    return callbacks_.bool_value != nullptr && callbacks_.bool_value(callbacks_.context, key.c_str());
}

void CallbackSettingsStore::setBool(const std::string& key, bool value) {
    if (callbacks_.set_bool != nullptr) callbacks_.set_bool(callbacks_.context, key.c_str(), value);
}

std::optional<Date> CallbackSettingsStore::dateValue(const std::string& key) const {
    double seconds = 0;
    if (callbacks_.date_value == nullptr || !callbacks_.date_value(callbacks_.context, key.c_str(), &seconds))
        return std::nullopt;
    // A value that is no instant counts as absent, like a value of another type.
    if (!std::isfinite(seconds)) return std::nullopt;
    return Date{seconds};
}

void CallbackSettingsStore::setDate(const std::string& key, Date value) {
    if (callbacks_.set_date != nullptr)
        callbacks_.set_date(callbacks_.context, key.c_str(), value.secondsSinceReferenceDate);
}

}  // namespace tallowen::capi
