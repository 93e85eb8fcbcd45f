#pragma once

// What each fuzz target checks of one input. A broken promise traps, which the
// fuzzer reports as a crash; the regression test in tests/ replays the inputs
// that once crashed through the same functions.

#include "activity/ActivationStamps.hpp"
#include "import/ImportStateCodec.hpp"
#include "model/DayKey.hpp"
#include "readers/ClaudeCodeReader.hpp"
#include "readers/CodexReader.hpp"
#include "readers/Iso8601.hpp"
#include "readers/LineJsonParser.hpp"
#include "readers/LineSplitter.hpp"

#include <simdjson.h>

#include <cmath>
#include <cstdint>
#include <ctime>
#include <optional>
#include <regex>
#include <string>
#include <string_view>

namespace tallowen::fuzz {

inline void require(bool promise) {
    if (!promise) __builtin_trap();
}

inline size_t lineCount(std::string_view bytes) {
    size_t lines = 0;
    forEachLine(bytes, [&](std::string_view) { ++lines; });
    return lines;
}

// A whole Claude Code log: at most one event a line, and the same events from
// a second reading with the same reader, which keeps nothing between files.
inline void claudeCodeFile(std::string_view bytes) {
    ClaudeCodeReader reader;
    std::vector<UsageEvent> first, second;
    reader.parseFile(bytes, first);
    reader.parseFile(bytes, second);
    require(first.size() <= lineCount(bytes));
    require(first == second);
}

// A whole Codex log: the same.
inline void codexFile(std::string_view bytes) {
    CodexReader reader;
    CodexFileState first, second;
    reader.parseFile(bytes, first);
    reader.parseFile(bytes, second);
    require(first.events.size() <= lineCount(bytes));
    require(first.events == second.events && first.quota == second.quota && first.model == second.model);
}

// The state file: whatever decodes encodes to a text that decodes to the same
// state and encodes to the same text again.
inline void importStateText(std::string_view text) {
    const auto state = decodeImportState(text);
    if (!state) return;
    const std::string encoded = encodeImportState(*state);
    const auto again = decodeImportState(encoded);
    require(again.has_value());
    require(*again == *state);
    require(encodeImportState(*again) == encoded);
}

// The activations file, the same way.
inline void activationsText(std::string_view text) {
    const auto stamps = decodeActivationStamps(text);
    if (!stamps) return;
    const std::string encoded = encodeActivationStamps(*stamps);
    const auto again = decodeActivationStamps(encoded);
    require(again.has_value());
    require(*again == *stamps);
}

// An independent reading of the two timestamp forms: a pattern, then the C
// library's own calendar arithmetic, checked field by field.
inline std::optional<double> referenceTimestamp(const std::string& text) {
    static const std::regex form(R"((\d{4})-(\d{2})-(\d{2})T(\d{2}):(\d{2}):(\d{2})(\.\d+)?(Z|([+-])(\d{2}):?(\d{2})))");
    std::smatch match;
    if (!std::regex_match(text, match, form)) return std::nullopt;
    const auto number = [&](int group) { return std::stoi(match[group].str()); };
    std::tm fields{};
    fields.tm_year = number(1) - 1900;
    fields.tm_mon = number(2) - 1;
    fields.tm_mday = number(3);
    fields.tm_hour = number(4);
    fields.tm_min = number(5);
    fields.tm_sec = number(6);
    const std::tm asWritten = fields;
    const time_t seconds = ::timegm(&fields);
    // A date that the calendar had to move (30 February, second 60) is no date.
    if (fields.tm_year != asWritten.tm_year || fields.tm_mon != asWritten.tm_mon ||
        fields.tm_mday != asWritten.tm_mday || fields.tm_hour != asWritten.tm_hour ||
        fields.tm_min != asWritten.tm_min || fields.tm_sec != asWritten.tm_sec)
        return std::nullopt;
    double offset = 0;
    if (match[8].str() != "Z") {
        if (number(10) > 23 || number(11) > 59) return std::nullopt;
        offset = (match[9].str() == "-" ? -1 : 1) * (number(10) * 3600.0 + number(11) * 60.0);
    }
    const double fraction = match[7].matched ? std::stod("0" + match[7].str().substr(0, 10)) : 0.0;
    return static_cast<double>(seconds) - offset - Date::unixEpochOffsetSeconds + fraction;
}

inline void iso8601Text(std::string_view text) {
    const auto parsed = parseIso8601Timestamp(text);
    // Long texts only have to be survived: the pattern matcher recurses per character.
    if (text.size() > 64) return;
    const auto reference = referenceTimestamp(std::string(text));
    require(parsed.has_value() == reference.has_value());
    if (parsed) require(std::fabs(parsed->secondsSinceReferenceDate - *reference) <= 1e-6);
}

// A day key written the canonical way reads back to the start of a day whose
// key it is; any other text just has to be survived.
inline void dayKeyText(std::string_view text) {
    const LocalCalendar calendar;
    const auto start = dateOfDayKey(text, calendar);
    static const std::regex canonical(R"([1-9]\d{3}-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01]))");
    if (text.size() != 10 || !std::regex_match(std::string(text), canonical)) return;
    const int year = std::stoi(std::string(text.substr(0, 4)));
    const int month = std::stoi(std::string(text.substr(5, 2)));
    const int day = std::stoi(std::string(text.substr(8, 2)));
    static constexpr int lengths[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (day > lengths[month - 1] || (month == 2 && day == 29 && !leap)) return;
    require(start.has_value());
    require(dayKey(*start, calendar) == text);
    require(calendar.startOfDay(*start) == *start);
}

// The line parser against the validating tree parser: the same lines refused,
// and the same first values at the same paths.
inline void lineJson(std::string_view line) {
    static constexpr std::string_view a[] = {"a"};
    static constexpr std::string_view ab[] = {"a", "b"};
    static constexpr std::string_view abc[] = {"a", "b", "c"};
    static constexpr std::string_view d[] = {"d"};
    static constexpr JsonPath paths[] = {a, ab, abc, d};
    static LineJsonParser parser;
    JsonField fields[4];
    const bool accepted = parser.parse(line, paths, fields);

    simdjson::dom::parser tree;
    simdjson::dom::element root;
    const bool treeAccepts = tree.parse(line.data(), line.size()).get(root) == simdjson::SUCCESS;
    require(accepted == treeAccepts);
    if (!accepted) return;
    for (size_t i = 0; i < 4; ++i) {
        std::optional<simdjson::dom::element> found = root;
        for (const std::string_view key : paths[i]) {
            simdjson::dom::element next;
            if (!found->is_object() || found->get_object().at_key(key).get(next) != simdjson::SUCCESS) {
                found.reset();
                break;
            }
            found = next;
        }
        const JsonField& field = fields[i];
        if (!found) {
            require(field.kind == JsonField::Kind::absent);
            continue;
        }
        switch (found->type()) {
            case simdjson::dom::element_type::OBJECT: require(field.kind == JsonField::Kind::object); break;
            case simdjson::dom::element_type::ARRAY: require(field.kind == JsonField::Kind::array); break;
            case simdjson::dom::element_type::STRING:
                require(field.kind == JsonField::Kind::string && field.text == found->get_string().value_unsafe());
                break;
            case simdjson::dom::element_type::INT64:
                require(field.kind == JsonField::Kind::integer && field.integer == found->get_int64().value_unsafe());
                break;
            case simdjson::dom::element_type::UINT64:
            case simdjson::dom::element_type::DOUBLE:
                require(field.kind == JsonField::Kind::number && field.number == found->get_double().value_unsafe());
                break;
            case simdjson::dom::element_type::BOOL: require(field.kind == JsonField::Kind::boolean); break;
            case simdjson::dom::element_type::NULL_VALUE: require(field.kind == JsonField::Kind::null); break;
        }
    }
}

}  // namespace tallowen::fuzz
