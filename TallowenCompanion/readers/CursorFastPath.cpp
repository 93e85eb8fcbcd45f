#include "readers/CursorFastPath.hpp"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
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

    // `text` is followed by simdjson's padding. Nothing when the text is not
    // strict JSON, or holds a \u escape, with which SQLite versions differ on
    // whether a name matches.
    std::optional<simdjson::dom::element> parse(std::string_view text) {
        if (!ready_ || holdsUnicodeEscape(text)) return std::nullopt;
        simdjson::dom::element root;
        if (parser_.parse(text.data(), text.size(), false).get(root) != simdjson::SUCCESS) return std::nullopt;
        return root;
    }

private:
    simdjson::dom::parser parser_;
    bool ready_;
};

// A value as the table holds it, kept so that json_extract can be asked about it later.
struct StoredValue {
    int type = SQLITE_NULL;
    std::string bytes;
    int64_t integer = 0;
    double real = 0;
};

// One value put through the reference's own json_extract expressions.
class ValueByReference {
public:
    explicit ValueByReference(sqlite3* database) : database_(database) {}

    // The creation time as the reference reads it; nothing when json_extract fails.
    std::optional<int64_t> createdAt(const StoredValue& value) {
        if (!createdAt_) createdAt_ = prepared(database_, createdAtOfValue);
        if (!step(createdAt_.get(), value)) return std::nullopt;
        const int64_t milliseconds = sqlite3_column_int64(createdAt_.get(), 0);
        sqlite3_reset(createdAt_.get());
        return milliseconds;
    }

    // Both counts as integers, NULL as 0; nothing when one is of another type
    // (SUM would then turn to floating point) or json_extract fails.
    std::optional<std::pair<int64_t, int64_t>> tokens(const StoredValue& value) {
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
    static bool step(sqlite3_stmt* statement, const StoredValue& value) {
        if (statement == nullptr) return false;
        const auto size = static_cast<int>(value.bytes.size());
        switch (value.type) {
            case SQLITE_TEXT: sqlite3_bind_text(statement, 1, value.bytes.data(), size, SQLITE_STATIC); break;
            case SQLITE_BLOB: sqlite3_bind_blob(statement, 1, value.bytes.data(), size, SQLITE_STATIC); break;
            case SQLITE_INTEGER: sqlite3_bind_int64(statement, 1, value.integer); break;
            case SQLITE_FLOAT: sqlite3_bind_double(statement, 1, value.real); break;
            default: sqlite3_bind_null(statement, 1); break;
        }
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

// Rows copied out of SQLite, handed from the thread that steps the query to
// the one that parses the values.
struct RowBatch {
    static constexpr size_t fullBytes = size_t{2} << 20;

    struct Row {
        bool creation = false;
        int valueType = SQLITE_NULL;
        size_t conversationAt = 0;
        size_t conversationBytes = 0;
        // Text and blobs lie in the batch's bytes, each followed by simdjson's padding.
        size_t valueAt = 0;
        size_t valueBytes = 0;
        int64_t integer = 0;
        double real = 0;
    };

    std::vector<Row> rows;
    bool last = false;
    // Set by the thread that filled the batch, cleared by the one that emptied it.
    std::atomic<bool> full{false};

    void add(sqlite3_stmt* statement, bool creation) {
        Row row;
        row.creation = creation;
        const std::string_view conversation = textOf(statement, creation ? 1 : 2);
        row.conversationAt = append(conversation, 0);
        row.conversationBytes = conversation.size();
        row.valueType = sqlite3_column_type(statement, 3);
        if (row.valueType == SQLITE_TEXT || row.valueType == SQLITE_BLOB) {
            const char* value = row.valueType == SQLITE_TEXT
                                    ? reinterpret_cast<const char*>(sqlite3_column_text(statement, 3))
                                    : static_cast<const char*>(sqlite3_column_blob(statement, 3));
            row.valueBytes = static_cast<size_t>(sqlite3_column_bytes(statement, 3));
            row.valueAt = append({value, row.valueBytes}, simdjson::SIMDJSON_PADDING);
        } else if (row.valueType == SQLITE_INTEGER) {
            row.integer = sqlite3_column_int64(statement, 3);
        } else if (row.valueType == SQLITE_FLOAT) {
            row.real = sqlite3_column_double(statement, 3);
        }
        rows.push_back(row);
    }

    std::string_view conversation(const Row& row) const {
        return {bytes_.get() + row.conversationAt, row.conversationBytes};
    }
    std::string_view value(const Row& row) const { return {bytes_.get() + row.valueAt, row.valueBytes}; }
    size_t size() const { return used_; }

    StoredValue stored(const Row& row) const {
        return {row.valueType, std::string(value(row)), row.integer, row.real};
    }

    void clear() {
        used_ = 0;
        rows.clear();
    }

private:
    size_t append(std::string_view text, size_t padding) {
        const size_t at = used_;
        const size_t needed = at + text.size() + padding;
        if (needed > capacity_) {
            // Grown without filling: only what is copied in, and the padding, is ever read.
            const size_t capacity = std::max(needed, 2 * capacity_);
            std::unique_ptr<char[]> grown(new char[capacity]);
            if (at > 0) std::memcpy(grown.get(), bytes_.get(), at);
            bytes_ = std::move(grown);
            capacity_ = capacity;
        }
        if (!text.empty()) std::memcpy(bytes_.get() + at, text.data(), text.size());
        std::memset(bytes_.get() + at + text.size(), 0, padding);
        used_ = needed;
        return at;
    }

    std::unique_ptr<char[]> bytes_;
    size_t used_ = 0;
    size_t capacity_ = 0;
};

// Folds the rows into creations and per-conversation sums; leaves the values
// simdjson does not settle for json_extract, to be asked once SQLite is free.
class RowFolder {
public:
    void fold(const RowBatch& batch) {
        for (const RowBatch::Row& row : batch.rows) {
            std::optional<simdjson::dom::element> root;
            if (row.valueType == SQLITE_TEXT) root = parser_.parse(batch.value(row));
            // json_extract of NULL is NULL; simdjson settles text it accepts; the rest goes to SQLite.
            const bool settled = row.valueType == SQLITE_NULL || root.has_value();
            if (row.creation) {
                const Extracted createdAt = root ? extracted(*root, "createdAt") : Extracted{};
                if (!settled || createdAt.kind == Extracted::Kind::undecided)
                    creationsToAsk_.push_back({creations_.size(), batch.stored(row)});
                creations_.push_back({std::string(batch.conversation(row)), createdAt.integer});
                continue;
            }
            Extracted input;
            Extracted output;
            simdjson::dom::element tokenCount;
            if (root && root->is_object() && root->at_key("tokenCount").get(tokenCount) == simdjson::SUCCESS) {
                input = extracted(tokenCount, "inputTokens");
                output = extracted(tokenCount, "outputTokens");
            }
            TokenSums& sums = sumsOf(batch.conversation(row));
            if (!settled || input.kind == Extracted::Kind::undecided || output.kind == Extracted::Kind::undecided)
                tokensToAsk_.push_back({&sums, batch.stored(row)});
            else
                exact_ = addExactly(sums, input.integer, output.integer) && exact_;
        }
    }

    // Asks json_extract about the values left; nothing when it cannot settle them.
    std::optional<CursorRows> finish(sqlite3* database) && {
        ValueByReference reference(database);
        for (const auto& [index, value] : creationsToAsk_) {
            const auto createdAt = reference.createdAt(value);
            if (!createdAt) return std::nullopt;
            creations_[index].createdAtMilliseconds = *createdAt;
        }
        for (const auto& [sums, value] : tokensToAsk_) {
            const auto counts = reference.tokens(value);
            if (!counts || !addExactly(*sums, counts->first, counts->second)) return std::nullopt;
        }
        if (!exact_) return std::nullopt;
        CursorRows rows;
        rows.creations = std::move(creations_);
        rows.conversations.reserve(conversations_.size());
        for (auto& [conversation, sums] : conversations_)
            rows.conversations.push_back({conversation, sums.input, sums.output, sums.withOutput});
        std::sort(rows.conversations.begin(), rows.conversations.end(),
                  [](const CursorConversationTokens& a, const CursorConversationTokens& b) {
                      return a.conversation < b.conversation;
                  });
        return rows;
    }

private:
    // A conversation's messages mostly follow one another: look it up only when it changes.
    TokenSums& sumsOf(std::string_view conversation) {
        if (current_ == nullptr || conversation != currentConversation_) {
            currentConversation_.assign(conversation);
            current_ = &conversations_[currentConversation_];
        }
        return *current_;
    }

    ValueParser parser_;
    std::vector<CursorCreation> creations_;
    // Node-based: the sums stay where they are while the map grows.
    std::unordered_map<std::string, TokenSums> conversations_;
    std::string currentConversation_;
    TokenSums* current_ = nullptr;
    std::vector<std::pair<size_t, StoredValue>> creationsToAsk_;
    std::vector<std::pair<TokenSums*, StoredValue>> tokensToAsk_;
    bool exact_ = true;
};

// Hands batches from this thread to a folding thread through a ring of
// batches, each passed back and forth by its `full` flag: SQLite's stepping
// and simdjson's parsing go on side by side. Without a second thread, each
// batch is folded as soon as it is filled.
class RowPipeline {
public:
    explicit RowPipeline(RowFolder& folder) : folder_(folder) {
        try {
            folding_ = std::thread([this] { foldUntilLast(); });
        } catch (const std::system_error&) {
        }
    }
    ~RowPipeline() { finish(); }
    RowPipeline(const RowPipeline&) = delete;
    RowPipeline& operator=(const RowPipeline&) = delete;

    // The batch to fill next, once the folding thread is done with it.
    RowBatch& batchToFill() {
        RowBatch& batch = ring_[filled_ % ring_.size()];
        batch.full.wait(true);
        return batch;
    }

    void send(RowBatch& batch) {
        ++filled_;
        if (!folding_.joinable()) {
            folder_.fold(batch);
            batch.clear();
            return;
        }
        batch.full.store(true);
        batch.full.notify_one();
    }

    // Sends the last batch and waits for everything to be folded; throws what the folding met.
    void finish() {
        if (finished_) return;
        finished_ = true;
        RowBatch& last = batchToFill();
        last.last = true;
        send(last);
        if (folding_.joinable()) folding_.join();
    }
    void rethrowFailure() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void foldUntilLast() {
        for (size_t folded = 0;; ++folded) {
            RowBatch& batch = ring_[folded % ring_.size()];
            batch.full.wait(false);
            const bool last = batch.last;
            if (!failure_) {
                try {
                    folder_.fold(batch);
                } catch (...) {
                    failure_ = std::current_exception();
                }
            }
            batch.clear();
            batch.full.store(false);
            batch.full.notify_one();
            if (last) return;
        }
    }

    RowFolder& folder_;
    std::array<RowBatch, 3> ring_;
    size_t filled_ = 0;
    bool finished_ = false;
    std::exception_ptr failure_;
    std::thread folding_;
};

}  // namespace

std::optional<CursorRows> readCursorRowsFast(sqlite3* database) {
    // The reference's groups come out in the order of their stored bytes;
    // only in UTF-8 is that the order of the identifiers' text.
    if (!storesUtf8(database)) return std::nullopt;
    const Statement rows = prepared(database, rowsQuery);
    if (!rows) return std::nullopt;

    RowFolder folder;
    bool complete = true;
    {
        RowPipeline pipeline(folder);
        RowBatch* batch = &pipeline.batchToFill();
        int stepped = SQLITE_ROW;
        while ((stepped = sqlite3_step(rows.get())) == SQLITE_ROW) {
            const bool creation = sqlite3_column_int(rows.get(), 0) != 0;
            if (creation) {
                // The reference skips a creation row without an identifier.
                if (sqlite3_column_type(rows.get(), 1) == SQLITE_NULL) continue;
            } else if (sqlite3_column_type(rows.get(), 2) != SQLITE_TEXT) {
                // Grouping by anything but text would part what the reference parts by type.
                complete = false;
                break;
            }
            batch->add(rows.get(), creation);
            if (batch->size() >= RowBatch::fullBytes) {
                pipeline.send(*batch);
                batch = &pipeline.batchToFill();
            }
        }
        if (stepped != SQLITE_DONE && stepped != SQLITE_ROW) complete = false;
        pipeline.send(*batch);
        pipeline.finish();
        pipeline.rethrowFailure();
    }
    if (!complete) return std::nullopt;
    return std::move(folder).finish(database);
}

}  // namespace tallowen
