#include "readers/CursorFastPath.hpp"

#include <gtest/gtest.h>

#include <random>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace tallowen {
namespace {

// Bytes as an SQL text value, whatever they hold (NUL, invalid UTF-8).
std::string text(std::string_view bytes) {
    std::string hex;
    for (const unsigned char byte : bytes) hex += "0123456789abcdef"[byte >> 4], hex += "0123456789abcdef"[byte & 15];
    return "CAST(x'" + hex + "' AS TEXT)";
}

// Values on which simdjson and json_extract could part: every one must come out of
// the fast path as the reference queries read it, or be sent back to them.
const std::vector<std::string> trickyNumbers = {
    "0", "-0", "1", "-5", "0.5", "2.5", "12.0", "1e3", "\"12\"", "\"abc\"", "true", "null", "{}", "[1]",
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

// A Cursor table of a dozen conversations, a quarter of whose values are tricky.
class GeneratedCursorDatabase {
public:
    explicit GeneratedCursorDatabase(unsigned seed) : random_(seed) {
        sqlite3_open(":memory:", &database_);
        std::string sql = "CREATE TABLE cursorDiskKV (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB); BEGIN;";
        const auto insert = [&](const std::string& key, const std::string& value) {
            sql += "INSERT INTO cursorDiskKV VALUES (" + key + ", " + value + ");";
        };
        for (int conversation = 0; conversation < 12; ++conversation) {
            // The last identifier starts with é: substr counts characters, not bytes.
            const std::string id =
                conversation == 11 ? "\xc3\xa9" + std::string(34, 'l') : std::string(36, char('a' + conversation));
            const long long createdAt = 1741950000000LL + number(-3, 3) * 43200000LL;
            insert(text("composerData:" + id),
                   chance(25) ? tricky("createdAt") : text(R"({"createdAt":)" + std::to_string(createdAt) + "}"));
            for (int message = number(0, 6); message > 0; --message)
                insert(text("bubbleId:" + id + ":" + std::to_string(message)),
                       chance(25) ? tricky("tokenCount")
                                  : text(R"({"text":"x\n\"y\"","tokenCount":{"inputTokens":)" +
                                         std::to_string(number(0, 5000)) + R"(,"outputTokens":)" +
                                         std::to_string(number(-2, 900)) + "}}"));
        }
        // Keys of other shapes: in capitals, too short, stored as a blob.
        const std::string tokens = text(R"({"tokenCount":{"inputTokens":7,"outputTokens":1}})");
        if (chance(4)) insert(text("BUBBLEID:" + std::string(36, 'b') + ":x"), tokens);
        if (chance(4)) insert(text("bubbleId:"), tokens);
        if (chance(6)) insert("CAST('bubbleId:" + std::string(36, 'c') + ":b' AS BLOB)", tokens);
        if (chance(6)) insert(text("composerData:" + std::string(36, 'd')), text(R"({"createdAt":1}")"));
        status = sqlite3_exec(database_, (sql + "COMMIT;").c_str(), nullptr, nullptr, nullptr);
    }
    ~GeneratedCursorDatabase() { sqlite3_close(database_); }
    sqlite3* handle() const { return database_; }
    int status = SQLITE_OK;

private:
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(int oneIn) { return number(1, oneIn) == 1; }
    template <typename List>
    const std::string& pick(const List& list) { return list[static_cast<size_t>(number(0, int(list.size()) - 1))]; }

    std::string tricky(const std::string& member) {
        switch (number(0, 5)) {
            case 0: return "NULL";
            case 1: return "5";
            case 2: return R"(CAST('{"createdAt":1741950000000,"tokenCount":{"inputTokens":3}}' AS BLOB))";
            case 3: return text(pick(trickyTexts));
            default:
                if (member == "createdAt") return text(R"({"createdAt":)" + pick(trickyNumbers) + "}");
                return text(R"({"tokenCount":{"inputTokens":)" + pick(trickyNumbers) + R"(,"outputTokens":)" +
                            (chance(2) ? pick(trickyNumbers) : "3") + "}}");
        }
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
        ASSERT_EQ(database.status, SQLITE_OK);
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
