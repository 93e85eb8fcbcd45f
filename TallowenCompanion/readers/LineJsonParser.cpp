#include "readers/LineJsonParser.hpp"

#include <simdjson.h>

#include <bitset>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace tallowen {
namespace {

namespace ondemand = simdjson::ondemand;
using simdjson::error_code;
using simdjson::SUCCESS;

// As deep as the validating parser goes: one level more is a fault of the line.
constexpr int maxDepth = 1024;
constexpr size_t maxPaths = 32;
// Buffers grown past this for one line are let go when a shorter line comes.
constexpr size_t keptCapacityBytes = 16u << 20;

std::optional<uint32_t> hexUnit(std::string_view body, size_t at) {
    if (at + 4 > body.size()) return std::nullopt;
    uint32_t unit = 0;
    for (size_t i = at; i < at + 4; ++i) {
        const char c = body[i];
        unit <<= 4;
        if (c >= '0' && c <= '9') unit |= static_cast<uint32_t>(c - '0');
        else if (c >= 'a' && c <= 'f') unit |= static_cast<uint32_t>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F') unit |= static_cast<uint32_t>(c - 'A' + 10);
        else return std::nullopt;
    }
    return unit;
}

// Whether every escape in the raw body of a string is one the parser takes
// when it unescapes: a known letter, or \u and four hex digits, surrogates
// only as a high one then a low one. The body is checked where it lies, so
// that a string nobody reads is never copied.
bool hasValidEscapes(std::string_view body) {
    size_t at = body.find('\\');
    while (at != std::string_view::npos) {
        if (at + 1 >= body.size()) return false;
        const char kind = body[at + 1];
        if (kind == 'u') {
            const auto unit = hexUnit(body, at + 2);
            if (!unit || (*unit >= 0xdc00 && *unit <= 0xdfff)) return false;
            at += 6;
            if (*unit >= 0xd800 && *unit < 0xdc00) {
                if (body.substr(at, 2) != "\\u") return false;
                const auto low = hexUnit(body, at + 2);
                if (!low || *low < 0xdc00 || *low > 0xdfff) return false;
                at += 6;
            }
        } else if (kind != '\0' && std::strchr("\"\\/bfnrt", kind) != nullptr) {
            at += 2;
        } else {
            return false;
        }
        at = body.find('\\', at);
    }
    return true;
}

// The body of the string whose opening quote is at `quote`: up to the first
// quote that no backslash escapes. The first stage of the parser has found
// every string closed already.
std::string_view stringBody(const char* quote, const char* end) {
    const char* start = quote + 1;
    const char* at = start;
    for (;;) {
        const auto* found = static_cast<const char*>(std::memchr(at, '"', static_cast<size_t>(end - at)));
        if (found == nullptr) return {start, static_cast<size_t>(end - start)};
        size_t backslashes = 0;
        for (const char* back = found; back > start && back[-1] == '\\'; --back) ++backslashes;
        if (backslashes % 2 == 0) return {start, static_cast<size_t>(found - start)};
        at = found + 1;
    }
}

class Walk {
public:
    Walk(const char* lineEnd, std::span<const JsonPath> paths, std::span<JsonField> fields,
         simdjson::dom::parser& numberParser)
        : lineEnd_(lineEnd), paths_(paths), fields_(fields), numberParser_(numberParser) {}

    error_code root(ondemand::document& document) {
        ondemand::json_type type;
        if (error_code error = document.type().get(type)) return error;
        if (type == ondemand::json_type::object) {
            ondemand::object object;
            if (error_code error = document.get_object().get(object)) return error;
            return pick(object, 0);
        }
        if (type == ondemand::json_type::array) {
            ondemand::array array;
            if (error_code error = document.get_array().get(array)) return error;
            return checkArray(array, 1);
        }
        // A lone scalar: the document's own accessors, since it is no value.
        switch (type) {
            case ondemand::json_type::string: return document.get_string().error();
            case ondemand::json_type::number: return document.get_number().error();
            case ondemand::json_type::boolean: return document.get_bool().error();
            default: {
                bool isNull = false;
                if (error_code error = document.is_null().get(isNull)) return error;
                return isNull ? SUCCESS : simdjson::N_ATOM_ERROR;
            }
        }
    }

private:
    // The fields of an object that lies on the paths at `level` keys deep.
    error_code pick(ondemand::object& object, size_t level) {
        if (level + 1 > static_cast<size_t>(maxDepth)) return simdjson::DEPTH_ERROR;
        std::bitset<maxPaths> seen;
        for (auto item : object) {
            ondemand::field field;
            if (error_code error = std::move(item).get(field)) return error;
            std::string_view key;
            if (error_code error = keyOf(field, key)) return error;
            std::bitset<maxPaths> matching;
            bool leadsDeeper = false;
            for (size_t i = 0; i < paths_.size(); ++i) {
                if (!onPath(i, level, key)) continue;
                matching.set(i);
                if (paths_[i].size() > level + 1) leadsDeeper = true;
            }
            // A key met again in the same object is only checked: its first value counts.
            if (matching.none() || (matching & seen).any()) {
                if (error_code error = check(field.value(), static_cast<int>(level) + 1)) return error;
                continue;
            }
            seen |= matching;
            prefix_.resize(level);
            prefix_.push_back(key);
            if (error_code error = take(field.value(), matching, leadsDeeper, level)) return error;
        }
        return SUCCESS;
    }

    bool onPath(size_t path, size_t level, std::string_view key) const {
        const JsonPath keys = paths_[path];
        if (keys.size() <= level || keys[level] != key) return false;
        for (size_t i = 0; i < level; ++i)
            if (keys[i] != prefix_[i]) return false;
        return true;
    }

    // The value of a key on the paths: kept for the paths that end there, and
    // walked into for those that go on.
    error_code take(ondemand::value value, const std::bitset<maxPaths>& matching, bool leadsDeeper, size_t level) {
        JsonField found;
        ondemand::json_type type;
        if (error_code error = value.type().get(type)) return error;
        error_code outcome = SUCCESS;
        switch (type) {
            case ondemand::json_type::object: {
                found.kind = JsonField::Kind::object;
                ondemand::object object;
                if (error_code error = value.get_object().get(object)) return error;
                outcome = leadsDeeper ? pick(object, level + 1) : checkObject(object, static_cast<int>(level) + 2);
                break;
            }
            case ondemand::json_type::array: {
                found.kind = JsonField::Kind::array;
                ondemand::array array;
                if (error_code error = value.get_array().get(array)) return error;
                outcome = checkArray(array, static_cast<int>(level) + 2);
                break;
            }
            case ondemand::json_type::string:
                found.kind = JsonField::Kind::string;
                outcome = value.get_string().get(found.text);
                break;
            case ondemand::json_type::number: {
                const std::string_view token = value.raw_json_token();
                ondemand::number number;
                if (error_code error = value.get_number().get(number)) return error;
                found.kind = JsonField::Kind::number;
                found.number = number.get_number_type() == ondemand::number_type::floating_point_number
                                   ? treeParsedNumber(token)
                                   : number.as_double();
                if (number.get_number_type() == ondemand::number_type::signed_integer) {
                    found.kind = JsonField::Kind::integer;
                    found.integer = number.get_int64();
                }
                break;
            }
            case ondemand::json_type::boolean:
                found.kind = JsonField::Kind::boolean;
                outcome = value.get_bool().error();
                break;
            case ondemand::json_type::null:
                found.kind = JsonField::Kind::null;
                outcome = checkNull(value);
                break;
        }
        if (outcome != SUCCESS) return outcome;
        for (size_t i = 0; i < paths_.size(); ++i)
            if (matching.test(i) && paths_[i].size() == level + 1) fields_[i] = found;
        return SUCCESS;
    }

    // A key as text: where it lies when it has no escape, else unescaped.
    error_code keyOf(ondemand::field& field, std::string_view& key) {
        const char* quote = field.key().raw() - 1;
        key = stringBody(quote, lineEnd_);
        if (key.find('\\') == std::string_view::npos) return SUCCESS;
        return field.unescaped_key().get(key);
    }

    // Everything below a value that no path asks for, checked and dropped.
    error_code check(ondemand::value value, int depth) {
        ondemand::json_type type;
        if (error_code error = value.type().get(type)) return error;
        switch (type) {
            case ondemand::json_type::object: {
                ondemand::object object;
                if (error_code error = value.get_object().get(object)) return error;
                return checkObject(object, depth + 1);
            }
            case ondemand::json_type::array: {
                ondemand::array array;
                if (error_code error = value.get_array().get(array)) return error;
                return checkArray(array, depth + 1);
            }
            case ondemand::json_type::string: {
                // Taken raw, so that the iterator steps over it and checks what follows.
                ondemand::raw_json_string raw;
                if (error_code error = value.get_raw_json_string().get(raw)) return error;
                return hasValidEscapes(stringBody(raw.raw() - 1, lineEnd_)) ? SUCCESS : simdjson::STRING_ERROR;
            }
            case ondemand::json_type::number: return value.get_number().error();
            case ondemand::json_type::boolean: return value.get_bool().error();
            case ondemand::json_type::null: return checkNull(value);
        }
        return simdjson::INCORRECT_TYPE;
    }

    error_code checkObject(ondemand::object& object, int depth) {
        if (depth > maxDepth) return simdjson::DEPTH_ERROR;
        for (auto item : object) {
            ondemand::field field;
            if (error_code error = std::move(item).get(field)) return error;
            std::string_view key;
            if (error_code error = keyOf(field, key)) return error;
            if (error_code error = check(field.value(), depth)) return error;
        }
        return SUCCESS;
    }

    error_code checkArray(ondemand::array& array, int depth) {
        if (depth > maxDepth) return simdjson::DEPTH_ERROR;
        for (auto item : array) {
            ondemand::value element;
            if (error_code error = std::move(item).get(element)) return error;
            if (error_code error = check(element, depth)) return error;
        }
        return SUCCESS;
    }

    // The on-demand reading of a number with many digits can be off (it gives
    // 0 for some); the tree parser's reading of the same token is exact.
    double treeParsedNumber(std::string_view token) {
        while (!token.empty() && (token.back() == ' ' || token.back() == '\t' || token.back() == '\r' ||
                                  token.back() == '\n'))
            token.remove_suffix(1);
        double number = 0;
        if (numberParser_.parse(simdjson::padded_string(token)).get_double().get(number) != SUCCESS) return 0;
        return number;
    }

    static error_code checkNull(ondemand::value& value) {
        bool isNull = false;
        if (error_code error = value.is_null().get(isNull)) return error;
        return isNull ? SUCCESS : simdjson::N_ATOM_ERROR;
    }

    const char* lineEnd_;
    std::span<const JsonPath> paths_;
    std::span<JsonField> fields_;
    simdjson::dom::parser& numberParser_;
    // The keys that led to the object being picked from.
    std::vector<std::string_view> prefix_;
};

}  // namespace

struct LineJsonParser::Buffers {
    ondemand::parser parser;
    simdjson::dom::parser numberParser;
    // The line and the parser's padding after it: the parser may read past the end.
    std::unique_ptr<char[]> line;
    size_t lineCapacity = 0;
};

LineJsonParser::LineJsonParser() : buffers_(std::make_unique<Buffers>()) {}
LineJsonParser::~LineJsonParser() = default;

bool LineJsonParser::parse(std::string_view line, std::span<const JsonPath> paths, std::span<JsonField> fields) {
    for (JsonField& field : fields) field = JsonField{};
    if (paths.size() > maxPaths || fields.size() < paths.size()) return false;

    const size_t needed = line.size() + simdjson::SIMDJSON_PADDING;
    // The texts handed back for an exceptionally long line lie in its buffers,
    // so they are let go only now, when an ordinary line comes.
    if (needed <= keptCapacityBytes) releaseLongLineBuffers();
    Buffers& buffers = *buffers_;
    if (buffers.lineCapacity < needed) {
        buffers.line.reset();
        buffers.lineCapacity = 0;
        buffers.line.reset(new char[needed]);
        buffers.lineCapacity = needed;
    }
    std::memcpy(buffers.line.get(), line.data(), line.size());
    std::memset(buffers.line.get() + line.size(), ' ', simdjson::SIMDJSON_PADDING);

    bool valid = false;
    {
        // Room for a level more than the walk takes, so that the parser's own
        // depth bookkeeping never reaches its end first.
        if (buffers.parser.capacity() < line.size() || buffers.parser.max_depth() <= maxDepth + 1) {
            if (buffers.parser.allocate(line.size(), maxDepth + 8) != SUCCESS) throw std::bad_alloc();
        }
        ondemand::document document;
        error_code error = buffers.parser.iterate(buffers.line.get(), line.size(), buffers.lineCapacity).get(document);
        if (error == simdjson::MEMALLOC) throw std::bad_alloc();
        if (error == SUCCESS) {
            Walk walk(buffers.line.get() + line.size(), paths, fields, buffers.numberParser);
            error = walk.root(document);
        }
        // Nothing may follow the top-level value.
        valid = error == SUCCESS && document.current_location().error() == simdjson::OUT_OF_BOUNDS;
        if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    }
    if (!valid) {
        for (JsonField& field : fields) field = JsonField{};
    }
    return valid;
}

void LineJsonParser::releaseLongLineBuffers() {
    if (buffers_->lineCapacity > keptCapacityBytes) buffers_ = std::make_unique<Buffers>();
}

}  // namespace tallowen
