#pragma once

#include "capi/tallowen.h"
#include "model/SettingsStore.hpp"

namespace tallowen::capi {

// The user-defaults keys of the caller, through its table of callbacks. The
// context is released when the last holder lets go.
class CallbackSettingsStore final : public SettingsStore {
public:
    explicit CallbackSettingsStore(tw_settings_callbacks callbacks) : callbacks_(callbacks) {}
    ~CallbackSettingsStore() override;
    CallbackSettingsStore(const CallbackSettingsStore&) = delete;
    CallbackSettingsStore& operator=(const CallbackSettingsStore&) = delete;

    bool boolValue(const std::string& key) const override;
    void setBool(const std::string& key, bool value) override;
    std::optional<Date> dateValue(const std::string& key) const override;
    void setDate(const std::string& key, Date value) override;

private:
    tw_settings_callbacks callbacks_;
};

}  // namespace tallowen::capi
