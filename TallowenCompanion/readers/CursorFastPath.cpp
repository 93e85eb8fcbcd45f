#include "readers/CursorFastPath.hpp"

#include <simdjson.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tallowen {
namespace {

// The rows of both reference queries, told apart by the first column; the
// key expressions are the reference's own.
constexpr const char* rowsQuery =
    "SELECT key LIKE 'composerData:%', substr(key, 14), substr(key, 10, 36), value\n"
    "FROM cursorDiskKV WHERE key LIKE 'composerData:%' OR key LIKE 'bubbleId:%'";
constexpr const char* createdAtOfValue = "SELECT json_extract(?1, '$.createdAt')";
constexpr const char* tokensOfValue =
    "SELECT json_extract(?1, '$.tokenCount.inputTokens'), json_extract(?1, '$.tokenCount.outputTokens')";

// Far below the nesting SQLite's JSON parser accepts, so that anything
// simdjson parses SQLite parses too.
constexpr size_t deepestNesting = 256;

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

Statement prepared(sqlite3* database, const char* sql) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(database, sql, -1, &raw, nullptr) != SQLITE_OK) {
        sqlite3_finalize(raw);
        return nullptr;
    }
    return Statement(raw);
}

// A member as json_extract would return it: SQL NULL (missing, null, or a
// path through something that is not an object), a 64-bit integer, or
// something simdjson does not settle.
struct Extracted {
    enum class Kind { null, integer, undecided } kind = Kind::null;
    int64_t integer = 0;
};

Extracted extracted(simdjson::dom::element object, std::string_view key) {
    if (!object.is_object()) return {};
    simdjson::dom::element value;
    if (object.at_key(key).get(value) != simdjson::SUCCESS) return {};
    switch (value.type()) {
        case simdjson::dom::element_type::NULL_VALUE:
            return {};
        case simdjson::dom::element_type::INT64:
            return {Extracted::Kind::integer, value.get_int64().value_unsafe()};
        default:
            return {Extracted::Kind::undecided, 0};
    }
}

bool holdsUnicodeEscape(std::string_view text) {
    const char* cursor = text.data();
    const char* const end = text.data() + text.size();
    while (cursor < end) {
        const auto* backslash = static_cast<const char*>(std::memchr(cursor, '\\', static_cast<size_t>(end - cursor)));
        if (backslash == nullptr || backslash + 1 == end) return false;
        if (backslash[1] == 'u') return true;
        // Whatever follows a backslash is its escape, a backslash included.
        cursor = backslash + 2;
    }
    return false;
}

// Parses a value's text when simdjson and SQLite agree on it for certain.
class ValueParser {
public:
    ValueParser() : ready_(parser_.allocate(1 << 16, deepestNesting) == simdjson::SUCCESS) {}

    // Nothing when the text is not strict JSON, or holds a \u escape, with
    // which SQLite versions differ on whether a name matches.
    std::optional<simdjson::dom::element> parse(std::string_view text) {
        if (!ready_ || holdsUnicodeEscape(text)) return std::nullopt;
        if (buffer_.size() < text.size() + simdjson::SIMDJSON_PADDING)
            buffer_.resize(text.size() + simdjson::SIMDJSON_PADDING);
        if (!text.empty()) std::memcpy(buffer_.data(), text.data(), text.size());
        simdjson::dom::element root;
        if (parser_.parse(buffer_.data(), text.size(), false).get(root) != simdjson::SUCCESS) return std::nullopt;
        return root;
    }

private:
    simdjson::dom::parser parser_;
    bool ready_;
    std::vector<char> buffer_;
};

// One value put through the reference's own json_extract expressions.
class ValueByReference {
public:
    explicit ValueByReference(sqlite3* database) : database_(database) {}

    // The creation time as the reference reads it; nothing when json_extract fails.
    std::optional<int64_t> createdAt(sqlite3_value* value) {
        if (!createdAt_) createdAt_ = prepared(database_, createdAtOfValue);
        if (!step(createdAt_.get(), value)) return std::nullopt;
        const int64_t milliseconds = sqlite3_column_int64(createdAt_.get(), 0);
        sqlite3_reset(createdAt_.get());
        return milliseconds;
    }

    // Both counts as integers, NULL as 0; nothing when one is of another type
    // (SUM would then turn to floating point) or json_extract fails.
    std::optional<std::pair<int64_t, int64_t>> tokens(sqlite3_value* value) {
        if (!tokens_) tokens_ = prepared(database_, tokensOfValue);
        if (!step(tokens_.get(), value)) return std::nullopt;
        std::optional<std::pair<int64_t, int64_t>> counts;
        const int inputType = sqlite3_column_type(tokens_.get(), 0);
        const int outputType = sqlite3_column_type(tokens_.get(), 1);
        if ((inputType == SQLITE_NULL || inputType == SQLITE_INTEGER) &&
            (outputType == SQLITE_NULL || outputType == SQLITE_INTEGER))
            counts.emplace(sqlite3_column_int64(tokens_.get(), 0), sqlite3_column_int64(tokens_.get(), 1));
        sqlite3_reset(tokens_.get());
        return counts;
    }

private:
    static bool step(sqlite3_stmt* statement, sqlite3_value* value) {
        if (statement == nullptr) return false;
        sqlite3_bind_value(statement, 1, value);
        if (sqlite3_step(statement) == SQLITE_ROW) return true;
        sqlite3_reset(statement);
        return false;
    }

    sqlite3* database_;
    Statement createdAt_;
    Statement tokens_;
};

// One conversation's sums, kept exactly as SUM would: the magnitudes bound
// every partial sum, so no order of the rows could overflow where this one did not.
struct TokenSums {
    int64_t input = 0;
    int64_t output = 0;
    int64_t withOutput = 0;
    uint64_t inputMagnitude = 0;
    uint64_t outputMagnitude = 0;
};

uint64_t magnitude(int64_t value) {
    return value < 0 ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

bool addExactly(TokenSums& sums, int64_t input, int64_t output) {
    constexpr auto largest = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    sums.inputMagnitude += magnitude(input);
    sums.outputMagnitude += magnitude(output);
    if (sums.inputMagnitude > largest || sums.outputMagnitude > largest || magnitude(input) > largest ||
        magnitude(output) > largest)
        return false;
    sums.input += input;
    sums.output += output;
    if (output > 0) ++sums.withOutput;
    return true;
}

std::string_view textOf(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    if (text == nullptr) return {};
    return {text, static_cast<size_t>(sqlite3_column_bytes(row, column))};
}

bool storesUtf8(sqlite3* database) {
    const Statement encoding = prepared(database, "PRAGMA encoding");
    return encoding && sqlite3_step(encoding.get()) == SQLITE_ROW && textOf(encoding.get(), 0) == "UTF-8";
}

}  // namespace

std::optional<CursorRows> readCursorRowsFast(sqlite3* database) {
    // The reference's groups come out in the order of their stored bytes;
    // only in UTF-8 is that the order of the identifiers' text.
    if (!storesUtf8(database)) return std::nullopt;
    const Statement rows = prepared(database, rowsQuery);
    if (!rows) return std::nullopt;

    ValueParser parser;
    ValueByReference reference(database);
    CursorRows result;
    std::unordered_map<std::string, TokenSums> conversations;
    std::string lastConversation;
    TokenSums* currentSums = nullptr;
    int stepped = SQLITE_ROW;
    while ((stepped = sqlite3_step(rows.get())) == SQLITE_ROW) {
        sqlite3_stmt* row = rows.get();
        const int valueType = sqlite3_column_type(row, 3);
        std::optional<simdjson::dom::element> root;
        if (valueType == SQLITE_TEXT) root = parser.parse(textOf(row, 3));
        // json_extract of NULL is NULL; simdjson settles text it accepts; the rest goes to SQLite.
        const bool settled = valueType == SQLITE_NULL || root.has_value();

        if (sqlite3_column_int(row, 0) != 0) {
            if (sqlite3_column_type(row, 1) == SQLITE_NULL) continue;
            CursorCreation creation{std::string(textOf(row, 1)), 0};
            const Extracted createdAt = root ? extracted(*root, "createdAt") : Extracted{};
            if (!settled || createdAt.kind == Extracted::Kind::undecided) {
                const auto byReference = reference.createdAt(sqlite3_column_value(row, 3));
                if (!byReference) return std::nullopt;
                creation.createdAtMilliseconds = *byReference;
            } else {
                creation.createdAtMilliseconds = createdAt.integer;
            }
            result.creations.push_back(std::move(creation));
            continue;
        }

        // Grouping by anything but text would part what the reference parts by type.
        if (sqlite3_column_type(row, 2) != SQLITE_TEXT) return std::nullopt;
        Extracted input;
        Extracted output;
        if (root) {
            simdjson::dom::element tokenCount;
            if (root->is_object() && root->at_key("tokenCount").get(tokenCount) == simdjson::SUCCESS) {
                input = extracted(tokenCount, "inputTokens");
                output = extracted(tokenCount, "outputTokens");
            }
        }
        int64_t inputTokens = input.integer;
        int64_t outputTokens = output.integer;
        if (!settled || input.kind == Extracted::Kind::undecided || output.kind == Extracted::Kind::undecided) {
            const auto byReference = reference.tokens(sqlite3_column_value(row, 3));
            if (!byReference) return std::nullopt;
            std::tie(inputTokens, outputTokens) = *byReference;
        }
        // A conversation's messages mostly follow one another: look it up only when it changes.
        const std::string_view conversation = textOf(row, 2);
        if (currentSums == nullptr || conversation != lastConversation) {
            lastConversation.assign(conversation);
            currentSums = &conversations[lastConversation];
        }
        if (!addExactly(*currentSums, inputTokens, outputTokens)) return std::nullopt;
    }
    if (stepped != SQLITE_DONE) return std::nullopt;

    result.conversations.reserve(conversations.size());
    for (auto& [conversation, sums] : conversations)
        result.conversations.push_back({conversation, sums.input, sums.output, sums.withOutput});
    std::sort(result.conversations.begin(), result.conversations.end(),
              [](const CursorConversationTokens& a, const CursorConversationTokens& b) {
                  return a.conversation < b.conversation;
              });
    return result;
}

}  // namespace tallowen
