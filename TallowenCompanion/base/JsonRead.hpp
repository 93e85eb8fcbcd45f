#pragma once

// Typed look-ups on a parsed JSON value. Only the files that parse JSON include
// this header, since the parser's header is large.

#include <simdjson.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowen::json {

using Element = simdjson::dom::element;

inline std::optional<Element> member(Element object, std::string_view key) {
    if (!object.is_object()) return std::nullopt;
    Element value;
    if (object.at_key(key).get(value) != simdjson::SUCCESS) return std::nullopt;
    return value;
}

inline std::optional<Element> objectMember(Element object, std::string_view key) {
    auto value = member(object, key);
    if (!value || !value->is_object()) return std::nullopt;
    return value;
}

// Integers are taken only when written as integers: 12.5, 12.0, "12" and true are not.
inline std::optional<int64_t> int64Member(Element object, std::string_view key) {
    auto value = member(object, key);
    if (!value || value->type() != simdjson::dom::element_type::INT64) return std::nullopt;
    return value->get_int64().value_unsafe();
}

// Any JSON number, integer or not.
inline std::optional<double> doubleMember(Element object, std::string_view key) {
    auto value = member(object, key);
    if (!value || !value->is_number()) return std::nullopt;
    double number = 0;
    if (value->get_double().get(number) != simdjson::SUCCESS) return std::nullopt;
    return number;
}

inline std::optional<std::string_view> stringMember(Element object, std::string_view key) {
    auto value = member(object, key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get_string().value_unsafe();
}

}  // namespace tallowen::json
