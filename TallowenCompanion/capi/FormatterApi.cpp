#include "capi/CApiText.hpp"
#include "capi/Handles.hpp"

#include "base/JsonWriter.hpp"
#include "ui/MenuFormats.hpp"

extern "C" {

tw_formatter* tw_formatter_create(tw_formatter_callbacks callbacks) {
    try {
        return new tw_formatter{std::make_shared<tallowen::capi::CallbackLocaleFormatter>(callbacks)};
    } catch (...) {
        if (callbacks.release != nullptr) callbacks.release(callbacks.context);
        return nullptr;
    }
}

void tw_formatter_free(tw_formatter* formatter) { delete formatter; }

char* tw_formatter_menu_texts(const tw_formatter* formatter, int64_t tokens, int64_t cost_cents,
                              int64_t water_milliliters) {
    if (formatter == nullptr) return nullptr;
    try {
        const tallowen::LocaleFormatter& locale = *formatter->formatter;
        tallowen::JsonWriter out;
        out.beginObject();
        out.key("tokens").string(tallowen::tokenText(tokens, locale));
        out.key("cost").string(tallowen::moneyText(cost_cents, locale));
        out.key("water").string(tallowen::litresText(water_milliliters, locale));
        out.endObject();
        return tallowen::capi::ownedText(out.text());
    } catch (...) {
        return nullptr;
    }
}

}  // extern "C"
