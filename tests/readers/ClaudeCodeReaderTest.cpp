#include "readers/ClaudeCodeReader.hpp"
#include "support/UsagePrinting.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tallowen {
namespace {

constexpr Date loggedAt{760007702.0};  // 2025-01-31T09:15:02Z
constexpr std::string_view sonnet = R"("model":"claude-sonnet-4-5-20250929",)";
constexpr std::string_view opus = R"("model":"claude-opus-4-1-20250805",)";
constexpr std::string_view fullUsage =
    R"({"input_tokens":1200,"cache_creation_input_tokens":8000,"cache_read_input_tokens":150000,"output_tokens":2000})";

std::string reply(std::string_view usage = fullUsage, std::string_view model = sonnet,
                  std::string_view timestamp = "2025-01-31T09:15:02Z") {
    return R"({"parentUuid":"p1","type":"assistant","timestamp":")" + std::string(timestamp) + R"(","message":{)" +
           std::string(model) + R"("role":"assistant","content":[{"type":"text","text":"ok"}],"usage":)" +
           std::string(usage) + "}}";
}

std::vector<UsageEvent> parsed(std::string_view file) {
    std::vector<UsageEvent> events;
    ClaudeCodeReader().parseFile(file, events);
    return events;
}

// 3×1200 + 3.75×8000 + 0.30000000000000004×150000 + 15×2000 = 108600.00000000001 $/M → 11 cents;
// water (0.1 × 9200 + 2000) × 0.1125 = 328.5 → 329 ml.
const UsageEvent fullSonnet{loggedAt, 9200, 2000, 11, 329};
// Opus: 5×1200 + 6.25×8000 + 0.5×150000 + 25×2000 = 181000 → 18.099999999999998 → 18 cents.
const UsageEvent fullOpus{loggedAt, 9200, 2000, 18, 329};
// Output 40000 at Opus prices: 100 cents, 4500 ml.
const UsageEvent outputOnly{loggedAt, 0, 40000, 100, 4500}, nothingCounted{loggedAt, 0, 0, 0, 0};
constexpr std::optional<UsageEvent> none;

// An assistant record at loggedAt whose remaining members are `rest`.
std::string record(std::string_view rest) {
    return R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z",)" + std::string(rest) + "}";
}

TEST(ClaudeCodeReaderTest, OneLine) {
    const std::pair<std::string, std::optional<UsageEvent>> cases[] = {
        {reply(), fullSonnet}, {reply(fullUsage, opus), fullOpus},
        {reply(fullUsage, ""), fullOpus}, {reply(fullUsage, R"("model":5,)"), fullOpus},  // the catch-all price
        // Cache reads stay out of the input: 10 + 5 = 15 in; 631.25 $/M → 0 cents; 0.39375 → 0 ml.
        {reply(R"({"input_tokens":10,"cache_creation_input_tokens":5,"cache_read_input_tokens":1000,)"
               R"("output_tokens":2})"),
         UsageEvent{loggedAt, 15, 2, 0, 0}},
        // Tokens that are not integers written as integers count as 0.
        {reply(R"({"input_tokens":12.5,"cache_creation_input_tokens":"12","cache_read_input_tokens":true,)"
               R"("output_tokens":40000})", opus), outputOnly},
        {reply(R"({"input_tokens":12.0,"cache_creation_input_tokens":null,"output_tokens":1e3})"), nothingCounted},
        {reply("{}"), nothingCounted}, {reply("null"), none},
        {reply(fullUsage, sonnet, "2025-01-31T09:15:02.123Z"), UsageEvent{Date{760007702.123}, 9200, 2000, 11, 329}},
        {reply(fullUsage, sonnet, "2025-01-31 09:15:02"), none},
        // Only the bytes "type":"assistant" and "usage" decide the kind, wherever they are.
        {R"({"type":"assistant", "timestamp": "2025-01-31T09:15:02Z", "message": {"model": "claude-sonnet-4-5", )"
         R"("usage": {"input_tokens": 1200, "cache_creation_input_tokens": 8000, "cache_read_input_tokens": 150000, )"
         R"("output_tokens": 2000}}})", fullSonnet},
        {R"({"type": "assistant","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":5}}})", none},
        {R"({"type":"user","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":40000},)"
         R"("content":[{"type":"assistant"}]}})", outputOnly},
        {record(R"("message":{"content":[]})"), none}, {record(R"("usage":{"output_tokens":5})"), none},
        {record(R"("message":"usage","x":{"usage":{}})"), none}, {"[" + reply() + "]", none},
        {reply().substr(0, 150), none}, {R"({"type":"assistant","usage":{},"a":"12"})", none},  // 40 bytes
        // As Claude Code writes it, Haiku 4.5: 1×8 + 1.25×4000 + 0.1×90000 + 5×600 = 17008 $/M → 2 cents; 113 ml.
        {R"({"parentUuid":"6f1c","isSidechain":false,"cwd":"/home/dev/app","sessionId":"a1b2","version":"2.0.14",)"
         R"("message":{"id":"msg_01X","type":"message","role":"assistant","model":"claude-haiku-4-5-20251001",)"
         R"("content":[{"type":"tool_use","id":"toolu_01","name":"Read","input":{"file_path":"/a/main.swift"}}],)"
         R"("stop_reason":null,"usage":{"input_tokens":8,"cache_creation_input_tokens":4000,)"
         R"("cache_read_input_tokens":90000,"cache_creation":{"ephemeral_5m_input_tokens":4000},"output_tokens":600,)"
         R"("service_tier":"standard"}},"requestId":"req_011","type":"assistant",)"
         R"("timestamp":"2025-01-31T09:15:02.000Z"})",
         UsageEvent{loggedAt, 4008, 600, 2, 113}},
    };
    for (const auto& [line, expected] : cases) {
        std::vector<UsageEvent> events;
        ClaudeCodeReader().parseLine(line, events);
        EXPECT_EQ(events, expected ? std::vector<UsageEvent>{*expected} : std::vector<UsageEvent>{}) << line;
    }
}

TEST(ClaudeCodeReaderTest, WholeFile) {
    const std::string user = R"({"type":"user","timestamp":"2025-01-31T09:15:00Z","message":{"content":"hello"}})";
    // The same reply twice counts twice; blank lines, CRLF ends and a missing final line feed are harmless.
    EXPECT_EQ(parsed(user + "\n" + reply() + "\r\n\n\n" + reply() + "\n" + user + "\n" + reply(fullUsage, opus)),
              (std::vector<UsageEvent>{fullSonnet, fullSonnet, fullOpus}));
    // A line far longer than the others, then one cut short.
    std::string longReply = reply();
    longReply.replace(longReply.find(R"("ok")"), 4, '"' + std::string(20 << 20, 'x') + '"');
    EXPECT_EQ(parsed(longReply + "\n" + reply(fullUsage, opus) + "\n" + reply().substr(0, 100)),
              (std::vector<UsageEvent>{fullSonnet, fullOpus}));
    EXPECT_TRUE(parsed("\n\n\r\n").empty());
    EXPECT_TRUE(parsed(std::string("\0\0\0", 3)).empty());
}

TEST(ClaudeCodeReaderDeathTest, InputTokenSumOverflowStopsTheProcess) {
    EXPECT_DEATH(parsed(reply(R"({"input_tokens":9223372036854775807,"cache_creation_input_tokens":1})")), "overflow");
}

}  // namespace
}  // namespace tallowen
