#include "base/Utf8Text.hpp"

#include <cstdint>

namespace tallowen {
namespace {

constexpr std::string_view replacementCharacter = "\xef\xbf\xbd";

struct Sequence {
    size_t length = 0;
    bool wellFormed = false;
};

// The sequence that starts at `at`: a well-formed character, or else its
// longest start that could still have begun one (at least one byte).
Sequence sequenceAt(std::string_view bytes, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(bytes[i]); };
    const uint8_t lead = byte(at);
    if (lead < 0x80) return {1, true};
    size_t continuations = 0;
    // The second byte's range is narrower after some leads: no overlong forms,
    // no surrogates, nothing above U+10FFFF.
    uint8_t secondLow = 0x80, secondHigh = 0xbf;
    if (lead >= 0xc2 && lead <= 0xdf) {
        continuations = 1;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        continuations = 2;
        if (lead == 0xe0) secondLow = 0xa0;
        if (lead == 0xed) secondHigh = 0x9f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        continuations = 3;
        if (lead == 0xf0) secondLow = 0x90;
        if (lead == 0xf4) secondHigh = 0x8f;
    } else {
        return {1, false};
    }
    size_t length = 1;
    for (; length <= continuations; ++length) {
        if (at + length >= bytes.size()) return {length, false};
        const uint8_t next = byte(at + length);
        const uint8_t low = length == 1 ? secondLow : 0x80;
        const uint8_t high = length == 1 ? secondHigh : 0xbf;
        if (next < low || next > high) return {length, false};
    }
    return {length, true};
}

// The bytes rewritten sequence by sequence; `append` adds each piece's text.
template <typename Append>
std::string rewritten(std::string_view bytes, Append&& append) {
    std::string text;
    text.reserve(bytes.size());
    size_t at = 0;
    while (at < bytes.size()) {
        const Sequence sequence = sequenceAt(bytes, at);
        append(text, bytes.substr(at, sequence.length), sequence.wellFormed);
        at += sequence.length;
    }
    return text;
}

}  // namespace

std::string validUtf8(std::string_view bytes) {
    return rewritten(bytes, [](std::string& text, std::string_view piece, bool valid) {
        text += valid ? piece : replacementCharacter;
    });
}

std::string losslessUtf8(std::string_view bytes) {
    return rewritten(bytes, [](std::string& text, std::string_view piece, bool valid) {
        if (valid) {
            text += piece;
            if (piece == replacementCharacter) text += replacementCharacter;
            return;
        }
        constexpr char hexDigits[] = "0123456789ABCDEF";
        for (const char c : piece) {
            const auto value = static_cast<uint8_t>(c);
            text += replacementCharacter;
            text += hexDigits[value >> 4];
            text += hexDigits[value & 0x0f];
        }
    });
}

}  // namespace tallowen
