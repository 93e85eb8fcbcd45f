#pragma once

#include <string>
#include <string_view>

namespace tallowen {

// The bytes as well-formed UTF-8 text: each ill-formed sequence becomes one
// U+FFFD, as the platform's string type reads bytes. Valid text is unchanged.
// File names on Linux are bytes, not text; JSON strings must be text.
std::string validUtf8(std::string_view bytes);

}  // namespace tallowen
