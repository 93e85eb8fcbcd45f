#include "base/Utf8Text.hpp"

#include <cstdint>

namespace tallowen {
namespace {

struct SequenceShape {
    size_t length = 0;  // 0: not a lead byte
    uint8_t secondLow = 0x80;
    uint8_t secondHigh = 0xBF;
};

// The well-formed byte sequences of UTF-8: the lead byte fixes the length and
// the range of the second byte (no overlong forms, no surrogates, nothing
// above U+10FFFF); every later byte is a plain continuation byte.
SequenceShape shapeOf(uint8_t lead) {
    if (lead < 0x80) return {1};
    if (lead >= 0xC2 && lead <= 0xDF) return {2};
    if (lead == 0xE0) return {3, 0xA0, 0xBF};
    if (lead == 0xED) return {3, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {3};
    if (lead == 0xF0) return {4, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {4};
    if (lead == 0xF4) return {4, 0x80, 0x8F};
    return {};
}

}  // namespace

// An ill-formed sequence is replaced by its maximal subpart: the lead byte and
// the bytes that still fitted, as the Unicode standard recommends.
std::string validUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const size_t length = bytes.size();
    size_t next = 0;
    while (next < length) {
        const size_t start = next;
        const SequenceShape shape = shapeOf(data[next++]);
        bool wellFormed = shape.length > 0;
        for (size_t index = 1; wellFormed && index < shape.length; ++index) {
            const uint8_t low = index == 1 ? shape.secondLow : 0x80;
            const uint8_t high = index == 1 ? shape.secondHigh : 0xBF;
            if (next < length && data[next] >= low && data[next] <= high) ++next;
            else wellFormed = false;
        }
        if (wellFormed) text.append(bytes.data() + start, next - start);
        else text += "\xef\xbf\xbd";
    }
    return text;
}

}  // namespace tallowen
