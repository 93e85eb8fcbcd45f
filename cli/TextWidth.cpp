#include "TextWidth.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace tallowen::cli {
namespace {

int codePointWidth(UChar32 c) {
    if (c < 0) return 1;  // a malformed byte shows as one replacement character
    if (c < 0x20 || c == 0x7F) return 0;
    const auto category = static_cast<UCharCategory>(u_charType(c));
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR) return 0;
    const auto eastAsian = static_cast<UEastAsianWidth>(u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH));
    return eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
}

std::string spaces(int count) { return std::string(count > 0 ? static_cast<size_t>(count) : 0u, ' '); }

}  // namespace

int displayWidth(std::string_view text) {
    int width = 0;
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    int32_t at = 0;
    while (at < length) {
        if (bytes[at] == 0x1B && at + 1 < length && bytes[at + 1] == '[') {
            // CSI: parameters and intermediates, then one final byte in @..~.
            at += 2;
            while (at < length && !(bytes[at] >= 0x40 && bytes[at] <= 0x7E)) ++at;
            if (at < length) ++at;
            continue;
        }
        UChar32 c = 0;
        U8_NEXT(bytes, at, length, c);
        width += codePointWidth(c);
    }
    return width;
}

std::string padRight(std::string_view text, int width) { return std::string(text) + spaces(width - displayWidth(text)); }

std::string padLeft(std::string_view text, int width) { return spaces(width - displayWidth(text)) + std::string(text); }

std::string spread(std::string_view left, std::string_view right, int width) {
    const int gap = width - displayWidth(left) - displayWidth(right);
    return std::string(left) + spaces(gap < 1 ? 1 : gap) + std::string(right);
}

std::string truncatedToWidth(std::string_view text, int width) {
    if (displayWidth(text) <= width) return std::string(text);
    constexpr std::string_view ellipsis = "…";
    const int room = width - displayWidth(ellipsis);
    if (room < 0) return {};
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    int32_t at = 0;
    int used = 0;
    while (at < length) {
        int32_t next = at;
        UChar32 c = 0;
        U8_NEXT(bytes, next, length, c);
        used += codePointWidth(c);
        if (used > room) break;
        at = next;
    }
    return std::string(text.substr(0, static_cast<size_t>(at))) + std::string(ellipsis);
}

std::vector<std::string> wrapText(std::string_view text, int width) {
    std::vector<std::string> lines;
    std::string line;
    int lineWidth = 0;
    const auto flush = [&] {
        lines.push_back(std::move(line));
        line.clear();
        lineWidth = 0;
    };
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(' ', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view word = text.substr(start, end - start);
        start = end + 1;
        if (word.empty()) continue;
        const int wordWidth = displayWidth(word);
        if (lineWidth > 0 && lineWidth + 1 + wordWidth <= width) {
            line += ' ';
            line += word;
            lineWidth += 1 + wordWidth;
            continue;
        }
        if (lineWidth > 0) flush();
        // A word wider than the line goes out in pieces of whole characters.
        const auto* bytes = reinterpret_cast<const uint8_t*>(word.data());
        const auto length = static_cast<int32_t>(word.size());
        int32_t at = 0;
        while (at < length) {
            const int32_t from = at;
            UChar32 c = 0;
            U8_NEXT(bytes, at, length, c);
            const int characterWidth = codePointWidth(c);
            if (lineWidth > 0 && lineWidth + characterWidth > width) flush();
            line.append(word.substr(static_cast<size_t>(from), static_cast<size_t>(at - from)));
            lineWidth += characterWidth;
        }
    }
    if (lineWidth > 0 || lines.empty()) flush();
    return lines;
}

}  // namespace tallowen::cli
