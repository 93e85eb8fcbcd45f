#include "readers/CursorFastPath.hpp"

#include <gtest/gtest.h>

#include <random>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace tallowen {
namespace {

// A value as stored: text, a blob, an integer, a real or NULL.
struct StoredValue {
    int type = SQLITE_TEXT;
    std::string bytes;
    double number = 0;
};

StoredValue text(std::string bytes) { return {SQLITE_TEXT, std::move(bytes)}; }

// Values on which simdjson and json_extract could part: every one must come
// out of the fast path as the reference queries read it, or send it back to them.
const std::vector<std::string> trickyNumbers = {
    "0", "-0", "1", "-5", "0.5", "2.5", "12.5", "12.0", "1e3", "\"12\"", "\"abc\"", "true", "false", "null", "{}",
    "[1]",
    "9223372036854775807", "-9223372036854775808", "9223372036854775808", "18446744073709551616", "1e400",
    "4611686018427387904"};

const std::vector<std::string> trickyTexts = {
    "", "{", "not json", "[]", "5", R"({"a":1} x)", R"({'a':1})", "{\"a\":\"\x01\"}", "{\"a\":\"\xff\"}",
    R"({"tokenCount":5})", R"({"tokenCount":[1,2]})", R"({"tokenCount":null})",
    R"({"tokenCount":{"inputTokens":1,"inputTokens":2,"outputTokens":3}})",
    R"({"token\u0043ount":{"inputTokens":9,"outputTokens":9}})",
    R"({"tokenCount":{"input\u0054okens":9,"outputTokens":1},"text":"\u00e9"})",
    R"({"createdAt":1741950000000,"createdAt":5})", R"({"text":"a \\u b","tokenCount":{"outputTokens":2}})",
    std::string(300, '[') + std::string(300, ']'), std::string("{\"createdAt\":1741950000000}\0tail", 32)};

class GeneratedCursorDatabase {
public:
    explicit GeneratedCursorDatabase(unsigned seed) : random_(seed) {
        sqlite3_open(":memory:", &database_);
        sqlite3_exec(database_, "CREATE TABLE cursorDiskKV (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB)",
                     nullptr, nullptr, nullptr);
        sqlite3_exec(database_, "BEGIN", nullptr, nullptr, nullptr);
        for (int conversation = 0; conversation < 12; ++conversation) {
            const std::string id = identifier(conversation);
            if (chance(25)) insert(text("composerData:" + id), tricky("createdAt"));
            else insert(text("composerData:" + id), text(R"({"createdAt":)" + std::to_string(createdAt()) + "}"));
            for (int message = number(0, 6); message > 0; --message) {
                const std::string key = "bubbleId:" + id + ":" + std::to_string(message);
                if (chance(25)) insert(text(key), tricky("tokenCount"));
                else insert(text(key), text(R"({"text":"x\n\"y\"","tokenCount":{"inputTokens":)" +
                                            std::to_string(number(0, 5000)) + R"(,"outputTokens":)" +
                                            std::to_string(number(-2, 900)) + "}}"));
            }
        }
        // Keys of other shapes: in capitals, too short, stored as a blob.
        if (chance(4)) insert(text("BUBBLEID:" + identifier(1) + ":x"), text(R"({"tokenCount":{"inputTokens":7}})"));
        if (chance(4)) insert(text("bubbleId:"), text(R"({"tokenCount":{"outputTokens":1}})"));
        if (chance(6))
            insert({SQLITE_BLOB, "bubbleId:" + identifier(2) + ":b"}, text(R"({"tokenCount":{"inputTokens":1}})"));
        if (chance(6)) insert(text("composerData:" + identifier(3)), text(R"({"createdAt":1}")"));
        sqlite3_exec(database_, "COMMIT", nullptr, nullptr, nullptr);
    }
    ~GeneratedCursorDatabase() { sqlite3_close(database_); }

    sqlite3* handle() const { return database_; }

private:
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(int oneIn) { return number(1, oneIn) == 1; }
    long long createdAt() { return 1741950000000LL + number(-3, 3) * 43200000LL; }
    std::string identifier(int conversation) {
        std::string id(36, static_cast<char>('a' + conversation));
        if (conversation == 11) id.replace(0, 2, "\xc3\xa9");  // é: substr counts characters, not bytes
        return id;
    }

    StoredValue tricky(const std::string& member) {
        switch (number(0, 5)) {
            case 0: return {SQLITE_NULL, {}};
            case 1: return {SQLITE_INTEGER, {}, 5};
            case 2: return {SQLITE_BLOB, R"({"createdAt":1741950000000,"tokenCount":{"inputTokens":3}})"};
            case 3: return text(trickyTexts[static_cast<size_t>(number(0, int(trickyTexts.size()) - 1))]);
            default: {
                const std::string& value = trickyNumbers[static_cast<size_t>(number(0, int(trickyNumbers.size()) - 1))];
                if (member == "createdAt") return text(R"({"createdAt":)" + value + "}");
                return text(R"({"tokenCount":{"inputTokens":)" + value + R"(,"outputTokens":)" +
                            (chance(2) ? value : "3") + "}}");
            }
        }
    }

    void insert(const StoredValue& key, const StoredValue& value) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, "INSERT INTO cursorDiskKV VALUES (?1, ?2)", -1, &statement, nullptr);
        for (int column = 1; column <= 2; ++column) {
            const StoredValue& stored = column == 1 ? key : value;
            const int size = static_cast<int>(stored.bytes.size());
            const char* bytes = stored.bytes.data();
            switch (stored.type) {
                case SQLITE_TEXT: sqlite3_bind_text(statement, column, bytes, size, SQLITE_TRANSIENT); break;
                case SQLITE_BLOB: sqlite3_bind_blob(statement, column, bytes, size, SQLITE_TRANSIENT); break;
                case SQLITE_INTEGER: sqlite3_bind_int64(statement, column, sqlite3_int64(stored.number)); break;
                default: sqlite3_bind_null(statement, column); break;
            }
        }
        sqlite3_step(statement);
        sqlite3_finalize(statement);
    }

    std::mt19937 random_;
    sqlite3* database_ = nullptr;
};

TEST(CursorFastPathTest, GivesTheReferenceRowsOrLeavesThemToTheReference) {
    int settled = 0;
    const int databases = 400;
    for (unsigned seed = 1; seed <= databases; ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        const GeneratedCursorDatabase database(seed);
        const CursorRows reference = readCursorRowsByReference(database.handle());
        const auto fast = readCursorRowsFast(database.handle());
        if (!fast) continue;
        ++settled;
        EXPECT_EQ(fast->creations, reference.creations);
        EXPECT_EQ(fast->conversations, reference.conversations);
    }
    // Most databases hold only values the fast path settles, with json_extract's help on a few rows.
    EXPECT_GT(settled, databases / 2);
}

}  // namespace
}  // namespace tallowen
