#pragma once

#include <string>
#include <string_view>

namespace tallowen {

// The bytes as well-formed UTF-8 text: each ill-formed sequence (its maximal
// subpart, as Unicode recommends) becomes one U+FFFD, as the platform's string
// type reads bytes. Valid text is unchanged. File names on Linux are bytes,
// not text; JSON strings must be text.
std::string validUtf8(std::string_view bytes);

// The bytes as well-formed UTF-8 text that still tells every byte string
// apart: each byte of an ill-formed sequence becomes U+FFFD followed by its
// two upper-case hex digits, and a U+FFFD that was in the bytes is doubled.
// Valid text without U+FFFD is unchanged, so keys of ordinary names stay as
// they always were.
std::string losslessUtf8(std::string_view bytes);

}  // namespace tallowen
