#pragma once

#include "model/SettingsStore.hpp"

#include <map>
#include <variant>

namespace tallowen {

// Settings held in memory only.
class MemorySettingsStore : public SettingsStore {
public:
    bool boolValue(const std::string& key) const override {
        auto found = values_.find(key);
        return found != values_.end() && std::holds_alternative<bool>(found->second) && std::get<bool>(found->second);
    }
    void setBool(const std::string& key, bool value) override { values_[key] = value; }
    std::optional<Date> dateValue(const std::string& key) const override {
        auto found = values_.find(key);
        if (found == values_.end() || !std::holds_alternative<Date>(found->second)) return std::nullopt;
        if (!std::get<Date>(found->second).isUsable()) return std::nullopt;
        return std::get<Date>(found->second);
    }
    void setDate(const std::string& key, Date value) override { values_[key] = value; }

private:
    std::map<std::string, std::variant<bool, Date>> values_;
};

}  // namespace tallowen
