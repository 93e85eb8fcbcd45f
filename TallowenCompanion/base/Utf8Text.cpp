#include "base/Utf8Text.hpp"

#include <unicode/utf8.h>

#include <cstdint>

namespace tallowen {

std::string validUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const size_t length = bytes.size();
    size_t next = 0;
    while (next < length) {
        const size_t start = next;
        UChar32 codePoint = 0;
        U8_NEXT(data, next, length, codePoint);
        if (codePoint < 0) text += "\xef\xbf\xbd";
        else text.append(bytes.data() + start, next - start);
    }
    return text;
}

}  // namespace tallowen
