#include "readers/LineJsonParser.hpp"

#include <gtest/gtest.h>
#include <simdjson.h>

#include <random>
#include <string>

namespace tallowen {
namespace {

using Kind = JsonField::Kind;

// The line parser refuses exactly the lines the validating tree parser refuses,
// though it builds no tree and copies no string it is not asked for.
TEST(LineJsonParserTest, AcceptsExactlyWhatTheTreeParserAccepts) {
    const auto nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    std::vector<std::string> lines = {
        R"({"a":"\udc00"})", R"({"a":"\ud800"})", R"({"a":"\ud800\u0041"})", R"({"a":"\ud800\udc00"})",
        R"({"b":"\ud800x"})", R"({"b":"\uDBFF\uDFFF"})", R"({"b":"\x"})", R"({"b":"\u00g0"})", R"({"b":"\\\""})",
        R"({"b":"a\"})", "{\"b\":\"\x01\"}", "{\"b\":\"\xff\"}", R"({"b\u0000":1})", R"({"b\q":1})",
        R"({"b":392233720368547758080})", R"({"b":18446744073709551615})", R"({"b":-9223372036854775809})",
        R"({"b":1e400})", R"({"b":1e-400})", R"({"b":01})", R"({"b":-})", R"({"b":1.})", R"({"b":.5})",
        R"({"b":[1,]})", R"({"b":{"c":1,}})", R"({"a":tru})", R"({"b":nulll})", R"({"a":1} )", R"({"a":1}x)",
        R"({"a" 1})", R"({"a":1 "b":2})", R"({"a":1}{})", R"({"a":[{"b":[true,false,null,-0.5e+3,"x"]}]})", "", " ",
        "[]", "7", "\"s\\u00e9\"", "\"\\q\"", "nul", "{", "}", R"({"a":})", R"({:1})", R"({"a":1,})",
        "\xef\xbb\xbf{}", nested(1024), nested(1025), "{\"b\":" + nested(1023) + "}", "{\"b\":" + nested(1024) + "}",
        "{\"a\":{\"a\":" + nested(1022) + "}}", "{\"a\":{\"a\":" + nested(1023) + "}}",
    };
    // Mutations of a realistic line: bytes dropped, doubled or replaced by ones JSON cares about.
    const std::string base =
        R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":{"model":"m\u00e9",)"
        R"("content":[{"t":"a\"b\\c"}],)"
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
    static constexpr std::string_view aPath[] = {"a"};
    static constexpr JsonPath paths[] = {aPath};
    JsonField fields[1];
    LineJsonParser parser;
    simdjson::dom::parser treeParser;
    int accepted = 0;
    for (const std::string& line : lines) {
        simdjson::dom::element root;
        const bool expected = treeParser.parse(line).get(root) == simdjson::SUCCESS;
        accepted += expected;
        ASSERT_EQ(parser.parse(line, paths, fields), expected) << line;
    }
    EXPECT_GT(accepted, 100);
}

TEST(LineJsonParserTest, HandsBackTheFirstValueAtEachPath) {
    static constexpr std::string_view message[] = {"message"}, model[] = {"message", "model"},
                                      tokens[] = {"message", "usage", "tokens"}, rate[] = {"message", "usage", "rate"},
                                      big[] = {"message", "usage", "big"}, list[] = {"list"}, nothing[] = {"nothing"};
    static constexpr JsonPath paths[] = {message, model, tokens, rate, big, list, nothing};
    JsonField fields[7];
    const auto kinds = [&] {
        std::vector<Kind> all;
        for (const JsonField& field : fields) all.push_back(field.kind);
        return all;
    };
    using enum Kind;
    LineJsonParser parser;
    ASSERT_TRUE(parser.parse(
        R"({"list":[1],"mess\u0061ge":{"model":"claude-\u00e9","usage":{"tokens":12,"rate":2.5,)"
        R"("big":18446744073709551615,)"
        R"("tokens":99},"model":"second"},"message":{"model":"ignored"},"nothing":null})",
        paths, fields));
    EXPECT_EQ(kinds(), (std::vector<Kind>{object, string, integer, number, number, array, null}));
    EXPECT_EQ(fields[1].text, "claude-\u00e9");
    EXPECT_EQ(fields[2].integer, 12);
    EXPECT_EQ(fields[3].number, 2.5);
    EXPECT_EQ(fields[4].number, 18446744073709551615.0);
    // A path through something that is not an object finds nothing; nor does a top level that is no object.
    ASSERT_TRUE(parser.parse(R"({"message":"text","list":{}})", paths, fields));
    EXPECT_EQ(kinds(), (std::vector<Kind>{string, absent, absent, absent, absent, object, absent}));
    ASSERT_TRUE(parser.parse(R"([{"message":{}}])", paths, fields));
    EXPECT_EQ(kinds(), std::vector<Kind>(7, absent));
    // A refused line leaves every field absent.
    EXPECT_FALSE(parser.parse(R"({"message":{"model":"x"}} ,)", paths, fields));
    EXPECT_EQ(kinds(), std::vector<Kind>(7, absent));
}

}  // namespace
}  // namespace tallowen
