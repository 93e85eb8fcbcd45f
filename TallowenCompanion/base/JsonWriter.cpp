#include "base/JsonWriter.hpp"

#include "base/Utf8Text.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace tallowen {

void appendJsonEscaped(std::string& out, std::string_view text) {
    out.push_back('"');
    // A reader of the text rejects the whole document over one ill-formed byte.
    for (const char c : validUtf8(text)) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char buffer[8];
                    std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
                    out += buffer;
                } else {
                    out.push_back(c);
                }
        }
    }
    out.push_back('"');
}

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (needsComma_) out_.push_back(',');
}

JsonWriter& JsonWriter::beginObject() {
    separate();
    out_.push_back('{');
    needsComma_ = false;
    return *this;
}

JsonWriter& JsonWriter::endObject() {
    out_.push_back('}');
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::beginArray() {
    separate();
    out_.push_back('[');
    needsComma_ = false;
    return *this;
}

JsonWriter& JsonWriter::endArray() {
    out_.push_back(']');
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view name) {
    separate();
    appendJsonEscaped(out_, name);
    out_.push_back(':');
    afterKey_ = true;
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::string(std::string_view value) {
    separate();
    appendJsonEscaped(out_, value);
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::integer(int64_t value) {
    separate();
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out_.append(buffer, result.ptr);
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::number(double value) {
    if (!std::isfinite(value)) return null();
    separate();
    char buffer[64];
    // From 2^63 up, the shortest text can be a bare integer too wide for a
    // 64-bit reader, which then rejects the whole document; an exponent keeps
    // it a number any reader takes.
    const auto result = std::fabs(value) >= 0x1p63
                            ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific)
                            : std::to_chars(buffer, buffer + sizeof buffer, value);
    out_.append(buffer, result.ptr);
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::boolean(bool value) {
    separate();
    out_ += value ? "true" : "false";
    needsComma_ = true;
    return *this;
}

JsonWriter& JsonWriter::null() {
    separate();
    out_ += "null";
    needsComma_ = true;
    return *this;
}

}  // namespace tallowen
