#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace tallowen {

// A key path from a line's top-level object down, as {"message", "usage"}.
using JsonPath = std::span<const std::string_view>;

// What a line holds at one path. Of a key written twice in one object, the
// first counts.
struct JsonField {
    enum class Kind { absent, object, array, string, integer, number, boolean, null };

    Kind kind = Kind::absent;
    // A string's text, unescaped; valid until the parser reads its next line.
    std::string_view text;
    // An integer written as one that fits 64 signed bits.
    int64_t integer = 0;
    // Any number (integers too) as a double.
    double number = 0;

    bool is(Kind wanted) const { return kind == wanted; }
};

// Parses log lines one at a time and hands back only the values at the paths
// asked for, while checking the whole line as a validating parser does: a line
// with a JSON fault anywhere gives nothing. Values are looked at where they
// lie, on demand, instead of being built into a tree, so a line costs about
// its own size in memory whatever it holds. The buffers grow to the longest
// line; those of an exceptionally long one are let go at the next line.
class LineJsonParser {
public:
    LineJsonParser();
    ~LineJsonParser();
    LineJsonParser(const LineJsonParser&) = delete;
    LineJsonParser& operator=(const LineJsonParser&) = delete;

    // False when the line is not one valid JSON text. Otherwise `fields[i]`
    // holds what the line has at `paths[i]`: all absent when the top level is
    // not an object. Throws std::bad_alloc when the memory for the line cannot
    // be had, so that the caller can leave the file for another time rather
    // than take the line as bad.
    bool parse(std::string_view line, std::span<const JsonPath> paths, std::span<JsonField> fields);

    // Lets the buffers of an exceptionally long line go now; the texts of the
    // last parse go with them.
    void releaseLongLineBuffers();

private:
    struct Buffers;
    std::unique_ptr<Buffers> buffers_;
};

}  // namespace tallowen
