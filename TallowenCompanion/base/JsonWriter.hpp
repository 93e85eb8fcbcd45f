#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tallowen {

// A compact JSON text builder. Commas are placed automatically; keys and
// values must alternate inside objects.
class JsonWriter {
public:
    JsonWriter& beginObject();
    JsonWriter& endObject();
    JsonWriter& beginArray();
    JsonWriter& endArray();
    JsonWriter& key(std::string_view name);
    JsonWriter& string(std::string_view value);
    JsonWriter& integer(int64_t value);
    // Shortest text that reads back as exactly the same double.
    JsonWriter& number(double value);
    JsonWriter& boolean(bool value);
    JsonWriter& null();

    const std::string& text() const { return out_; }
    std::string take() { return std::move(out_); }

private:
    void separate();

    std::string out_;
    bool needsComma_ = false;
    bool afterKey_ = false;
};

void appendJsonEscaped(std::string& out, std::string_view text);

}  // namespace tallowen
