#pragma once

#include "model/Date.hpp"

#include <optional>
#include <string>

namespace tallowen {

// The user-defaults keys: "lastImportDate", "usageSamplePurge.v1",
// "cloudSync.lastSuccessAt", ... A value of another type reads as absent.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    virtual bool boolValue(const std::string& key) const = 0;  // false when absent
    virtual void setBool(const std::string& key, bool value) = 0;
    virtual std::optional<Date> dateValue(const std::string& key) const = 0;
    virtual void setDate(const std::string& key, Date value) = 0;
};

}  // namespace tallowen
