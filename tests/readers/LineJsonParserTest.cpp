#include "../../fuzz/FuzzTargets.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tallowen {
namespace {

// The line parser refuses exactly the lines the validating tree parser refuses, though it
// builds no tree and copies no string it is not asked for, and hands back the first value
// at each path as the tree has it: the lineJson fuzz target's check, which traps on a
// difference, run here on lines chosen for their edges as the fuzzer runs it on its own.
TEST(LineJsonParserTest, AcceptsWhatTheTreeParserAcceptsAndFindsTheSameValues) {
    const auto nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    const std::string lines[] = {
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
        // Escaped and repeated keys, numbers past 64 bits, a path through a string, a top level that is no object.
        R"({"d":[1],"\u0061":{"b":{"c":12,"x":2.5,"c":99},"b":"second"},"a":{"b":"ignored"}})",
        R"({"a":{"b":{"c":18446744073709551615}},"d":"claude-\u00e9"})", R"({"a":{"b":{"c":-2.5e1}},"d":null})",
        R"({"a":"text","d":true})", R"([{"a":{"b":{"c":1}}}])",
        R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":{"model":"m\u00e9",)"
        R"("content":[{"t":"a\"b\\c"}],)"
        R"("usage":{"input_tokens":12,"output_tokens":-3.5e2,"x":[true,false,null]}},"a":"\ud83d\ude00"})",
    };
    for (const std::string& line : lines) fuzz::lineJson(line);
}

}  // namespace
}  // namespace tallowen
