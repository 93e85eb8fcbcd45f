#include "readers/LineJsonParser.hpp"

#include <gtest/gtest.h>
#include <simdjson.h>

#include <random>
#include <string>

namespace tallowen {
namespace {

using Kind = JsonField::Kind;

bool treeParserAccepts(const std::string& line) {
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    return parser.parse(line).get(root) == simdjson::SUCCESS;
}

bool accepts(LineJsonParser& parser, const std::string& line) {
    static constexpr std::string_view aPath[] = {"a"};
    static constexpr JsonPath paths[] = {aPath};
    JsonField fields[1];
    return parser.parse(line, paths, fields);
}

// The line parser refuses exactly the lines the validating tree parser refuses,
// though it builds no tree and copies no string it is not asked for.
TEST(LineJsonParserTest, AcceptsExactlyWhatTheTreeParserAccepts) {
    std::vector<std::string> lines = {
        R"({"a":"\udc00"})", R"({"a":"\ud800"})", R"({"a":"\ud800\u0041"})", R"({"a":"\ud800\udc00"})",
        R"({"b":"\ud800x"})", R"({"b":"\uDBFF\uDFFF"})", R"({"b":"\x"})", R"({"b":"\u00g0"})", R"({"b":"\\"})",
        R"({"b":"\\\""})", R"({"b":"a\"})", "{\"b\":\"\x01\"}", "{\"b\":\"\xff\"}", R"({"b\u0000":1})",
        R"({"b\q":1})", R"({"b":392233720368547758080})", R"({"b":18446744073709551615})",
        R"({"b":-9223372036854775809})", R"({"b":1e400})", R"({"b":1e-400})", R"({"b":01})", R"({"b":-})",
        R"({"b":1.})", R"({"b":.5})", R"({"b":[1,]})", R"({"b":{"c":1,}})", R"({"a":tru})", R"({"b":nulll})",
        R"({"b":falsey})", R"({"a":1} )", R"({"a":1}x)", R"({"a" 1})", R"({"a":1 "b":2})", R"({"a":1}{})",
        R"({"a":[{"b":[true,false,null,-0.5e+3,"x"]}]})", "", " ", "[]", "[1,[2,[3]]]", "7", "\"s\\u00e9\"",
        "\"\\q\"", "null", "nul", "{}", "{", "}", R"({"a":})", R"({:1})", R"({"a":1,})", "\xef\xbb\xbf{}",
        std::string(1024, '[') + std::string(1024, ']'), std::string(1025, '[') + std::string(1025, ']'),
        "{\"b\":" + std::string(1023, '[') + std::string(1023, ']') + "}",
        "{\"b\":" + std::string(1024, '[') + std::string(1024, ']') + "}",
        "{\"a\":{\"a\":" + std::string(1022, '[') + std::string(1022, ']') + "}}",
        "{\"a\":{\"a\":" + std::string(1023, '[') + std::string(1023, ']') + "}}",
    };
    // Mutations of a realistic line: bytes dropped, doubled or replaced by ones JSON cares about.
    const std::string base =
        R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":{"model":"m\u00e9","content":[{"t":"a\"b\\c"}],)"
        R"("usage":{"input_tokens":12,"output_tokens":-3.5e2,"x":[true,false,null]}},"a":"\ud83d\ude00"})";
    const std::string significant = "{}[]:,\"\\u0-.e+ntf\xff\x01 ";
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        std::string line = base;
        for (int edits = 1 + static_cast<int>(random() % 3); edits > 0; --edits) {
            const size_t at = random() % line.size();
            const char c = significant[random() % significant.size()];
            switch (random() % 3) {
                case 0: line.erase(at, 1); break;
                case 1: line.insert(at, 1, c); break;
                default: line[at] = c;
            }
        }
        lines.push_back(line);
    }
    LineJsonParser parser;
    int accepted = 0;
    for (const std::string& line : lines) {
        const bool expected = treeParserAccepts(line);
        accepted += expected;
        ASSERT_EQ(accepts(parser, line), expected) << line;
    }
    EXPECT_GT(accepted, 100);
}

TEST(LineJsonParserTest, HandsBackTheFirstValueAtEachPath) {
    static constexpr std::string_view messagePath[] = {"message"};
    static constexpr std::string_view modelPath[] = {"message", "model"};
    static constexpr std::string_view tokensPath[] = {"message", "usage", "tokens"};
    static constexpr std::string_view ratePath[] = {"message", "usage", "rate"};
    static constexpr std::string_view bigPath[] = {"message", "usage", "big"};
    static constexpr std::string_view listPath[] = {"list"};
    static constexpr std::string_view nothingPath[] = {"nothing"};
    static constexpr JsonPath paths[] = {messagePath, modelPath, tokensPath, ratePath, bigPath, listPath, nothingPath};
    JsonField fields[7];
    LineJsonParser parser;

    ASSERT_TRUE(parser.parse(
        R"({"list":[1],"mess\u0061ge":{"model":"claude-\u00e9","usage":{"tokens":12,"rate":2.5,"big":18446744073709551615,)"
        R"("tokens":99},"model":"second"},"message":{"model":"ignored"},"nothing":null})",
        paths, fields));
    EXPECT_EQ(fields[0].kind, Kind::object);
    EXPECT_EQ(fields[1].kind, Kind::string);
    EXPECT_EQ(fields[1].text, "claude-\u00e9");
    EXPECT_EQ(fields[2].kind, Kind::integer);
    EXPECT_EQ(fields[2].integer, 12);
    EXPECT_EQ(fields[3].kind, Kind::number);
    EXPECT_EQ(fields[3].number, 2.5);
    EXPECT_EQ(fields[4].kind, Kind::number);
    EXPECT_EQ(fields[4].number, 18446744073709551615.0);
    EXPECT_EQ(fields[5].kind, Kind::array);
    EXPECT_EQ(fields[6].kind, Kind::null);

    // A path through something that is not an object finds nothing; nor does a top level that is no object.
    ASSERT_TRUE(parser.parse(R"({"message":"text","list":{}})", paths, fields));
    EXPECT_EQ(fields[0].kind, Kind::string);
    EXPECT_EQ(fields[1].kind, Kind::absent);
    EXPECT_EQ(fields[5].kind, Kind::object);
    ASSERT_TRUE(parser.parse(R"([{"message":{}}])", paths, fields));
    EXPECT_EQ(fields[0].kind, Kind::absent);
    // A refused line leaves every field absent.
    EXPECT_FALSE(parser.parse(R"({"message":{"model":"x"}} ,)", paths, fields));
    EXPECT_EQ(fields[1].kind, Kind::absent);
}

}  // namespace
}  // namespace tallowen
