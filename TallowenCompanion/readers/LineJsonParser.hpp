#pragma once

// Only the readers include this header, since the parser's header is large.

#include <simdjson.h>

#include <cstring>
#include <string_view>
#include <vector>

namespace tallowen {

// Parses one log line at a time. The line is copied into a buffer that keeps
// the parser's padding, so that neither the buffer nor the parser's own
// storage is allocated again once they have grown to the longest line.
class LineJsonParser {
public:
    simdjson::simdjson_result<simdjson::dom::element> parse(std::string_view line) {
        if (buffer_.size() < line.size() + simdjson::SIMDJSON_PADDING)
            buffer_.resize(line.size() + simdjson::SIMDJSON_PADDING);
        if (!line.empty()) std::memcpy(buffer_.data(), line.data(), line.size());
        return parser_.parse(buffer_.data(), line.size(), false);
    }

private:
    simdjson::dom::parser parser_;
    std::vector<char> buffer_;
};

}  // namespace tallowen
