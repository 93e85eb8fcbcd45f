#include "capi/Handles.hpp"

extern "C" {

tw_settings* tw_settings_create(tw_settings_callbacks callbacks) {
    try {
        return new tw_settings{std::make_shared<tallowen::capi::CallbackSettingsStore>(callbacks)};
    } catch (...) {
        if (callbacks.release != nullptr) callbacks.release(callbacks.context);
        return nullptr;
    }
}

void tw_settings_free(tw_settings* settings) { delete settings; }

}  // extern "C"
