#include "capi/CApiText.hpp"

#include <cstdlib>
#include <cstring>

namespace tallowen::capi {

char* ownedText(std::string_view text) {
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

std::string textOf(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace tallowen::capi

extern "C" {

void tw_string_free(char* text) { std::free(text); }

void tw_reply_text(tw_reply* reply, const char* text, size_t length) {
    if (reply == nullptr) return;
    try {
        reply->text = text == nullptr ? std::string() : std::string(text, length);
    } catch (...) {
        reply->failure = "out of memory";
    }
}

void tw_reply_integer(tw_reply* reply, int64_t value) {
    if (reply != nullptr) reply->integer = value;
}

void tw_reply_failure(tw_reply* reply, const char* description) {
    if (reply == nullptr) return;
    try {
        reply->failure = tallowen::capi::textOf(description);
    } catch (...) {
        reply->failure.emplace();
    }
}

}  // extern "C"
