#pragma once

#include "capi/tallowen.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What a callback of the caller's tables answered.
struct tw_reply {
    std::optional<std::string> text;
    std::optional<int64_t> integer;
    std::optional<std::string> failure;
};

namespace tallowen::capi {

// A copy the caller owns and frees with tw_string_free; NULL when memory runs out.
char* ownedText(std::string_view text);

// The text of a C string that may be NULL.
std::string textOf(const char* text);

}  // namespace tallowen::capi
