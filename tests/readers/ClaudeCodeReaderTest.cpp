#include "readers/ClaudeCodeReader.hpp"
#include "support/UsagePrinting.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tallowen {
namespace {

// 2025-01-31T09:15:02Z.
constexpr Date loggedAt{760007702.0};

constexpr std::string_view sonnetModel = R"("model":"claude-sonnet-4-5-20250929",)";
constexpr std::string_view opusModel = R"("model":"claude-opus-4-1-20250805",)";
constexpr std::string_view fullUsage =
    R"({"input_tokens":1200,"cache_creation_input_tokens":8000,"cache_read_input_tokens":150000,"output_tokens":2000})";

std::string assistantLine(std::string_view usage, std::string_view model = sonnetModel,
                          std::string_view timestamp = R"("2025-01-31T09:15:02Z")") {
    std::string line = R"({"parentUuid":"p1","type":"assistant","timestamp":)";
    line += timestamp;
    line += R"(,"message":{)";
    line += model;
    line += R"("role":"assistant","content":[{"type":"text","text":"ok"}],"usage":)";
    line += usage;
    line += "}}";
    return line;
}

std::vector<UsageEvent> parsedLine(std::string_view line) {
    ClaudeCodeReader reader;
    std::vector<UsageEvent> events;
    reader.parseLine(line, events);
    return events;
}

// Sonnet, 1200 fresh + 8000 written + 150000 read, 2000 out:
// 3×1200 + 3.75×8000 + 0.30000000000000004×150000 + 15×2000 = 108600.00000000001 $/M → 10.86 → 11 cents;
// water (0.1 × 9200 + 2000) × 0.1125 = 328.5 → 329 ml.
const UsageEvent fullSonnetEvent{loggedAt, 9200, 2000, 11, 329};
// The same tokens at Opus prices: 5×1200 + 6.25×8000 + 0.5×150000 + 25×2000 = 181000 → 18.099999999999998 → 18.
const UsageEvent fullOpusEvent{loggedAt, 9200, 2000, 18, 329};

TEST(ClaudeCodeReaderTest, OneLine) {
    struct Case {
        const char* why;
        std::string line;
        std::optional<UsageEvent> expected;
    };
    const Case cases[] = {
        {"a full usage record", assistantLine(fullUsage), fullSonnetEvent},
        {"priced by its model", assistantLine(fullUsage, opusModel), fullOpusEvent},
        {"no model: the catch-all Claude price", assistantLine(fullUsage, ""), fullOpusEvent},
        {"a model that is not a string counts as none", assistantLine(fullUsage, R"("model":5,)"), fullOpusEvent},
        // Cache reads are not input: 10 + 5 = 15. Cost 631.25 $/M → 0.063125 → 0; water 0.39375 → 0.
        {"cache reads stay out of the input count",
         assistantLine(
             R"({"input_tokens":10,"cache_creation_input_tokens":5,"cache_read_input_tokens":1000,"output_tokens":2})"),
         UsageEvent{loggedAt, 15, 2, 0, 0}},
        {"usage without token fields", assistantLine("{}"), UsageEvent{loggedAt, 0, 0, 0, 0}},
        // Only output 40000 counts: 25 × 40000 = 1e6 $/M → 100 cents; 40000 × 0.1125 = 4500 ml.
        {"tokens that are not integers count as 0",
         assistantLine(
             R"({"input_tokens":12.5,"cache_creation_input_tokens":"12","cache_read_input_tokens":true,"output_tokens":40000})",
             opusModel),
         UsageEvent{loggedAt, 0, 40000, 100, 4500}},
        {"integers written with a fraction or as null count as 0",
         assistantLine(R"({"input_tokens":12.0,"cache_creation_input_tokens":null,"output_tokens":1e3})"),
         UsageEvent{loggedAt, 0, 0, 0, 0}},
        {"a timestamp with fractional seconds",
         assistantLine(fullUsage, sonnetModel, R"("2025-01-31T09:15:02.123Z")"),
         UsageEvent{Date{760007702.0 + 0.123}, 9200, 2000, 11, 329}},
        {"a timestamp with a zone offset", assistantLine(fullUsage, sonnetModel, R"("2025-01-31T10:15:02+01:00")"),
         fullSonnetEvent},
        {"a timestamp with a blank instead of T and no zone",
         assistantLine(fullUsage, sonnetModel, R"("2025-01-31 09:15:02")"), std::nullopt},
        {"blanks after colons elsewhere do not matter",
         R"({"type":"assistant", "timestamp": "2025-01-31T09:15:02Z", "message": {"model": "claude-sonnet-4-5", "usage": {"input_tokens": 1200, "cache_creation_input_tokens": 8000, "cache_read_input_tokens": 150000, "output_tokens": 2000}}})",
         fullSonnetEvent},
        {"a blank after the colon of the type key",
         R"({"type": "assistant","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":5}}})",
         std::nullopt},
        {"no usage key anywhere",
         R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":{"role":"assistant","content":[]}})",
         std::nullopt},
        {"only the byte test decides the kind",
         R"({"type":"user","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":40000},"content":[{"type":"assistant"}]}})",
         UsageEvent{loggedAt, 0, 40000, 100, 4500}},
        {"no message", R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","usage":{"output_tokens":5}})",
         std::nullopt},
        {"a message that is not an object",
         R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":"usage","x":{"usage":{}}})", std::nullopt},
        {"usage that is null", assistantLine("null"), std::nullopt},
        {"a top level that is an array",
         R"([{"type":"assistant","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{}}}])", std::nullopt},
        {"a carriage return before the line feed", assistantLine(fullUsage) + "\r", fullSonnetEvent},
        {"a line cut short", assistantLine(fullUsage).substr(0, 150), std::nullopt},
        // 40 bytes, valid JSON, with both byte sequences.
        {"a line of 40 bytes", R"({"type":"assistant","usage":{},"a":"12"})", std::nullopt},
    };
    for (const Case& c : cases) {
        const std::vector<UsageEvent> events = parsedLine(c.line);
        if (c.expected) {
            ASSERT_EQ(events.size(), 1u) << c.why;
            EXPECT_EQ(events.front(), *c.expected) << c.why;
        } else {
            EXPECT_TRUE(events.empty()) << c.why;
        }
    }
    EXPECT_EQ(std::string_view(R"({"type":"assistant","usage":{},"a":"12"})").size(), 40u);
}

TEST(ClaudeCodeReaderTest, WholeFile) {
    ClaudeCodeReader reader;
    const std::string reply = assistantLine(fullUsage);
    const std::string opusReply = assistantLine(fullUsage, opusModel);
    const std::string userTurn =
        R"({"type":"user","timestamp":"2025-01-31T09:15:00Z","message":{"role":"user","content":"hello"}})";

    // The same reply twice counts twice; blank lines and CRLF ends are harmless;
    // the last line needs no line feed.
    const std::string file = userTurn + "\n" + reply + "\r\n\n\n" + reply + "\n" + userTurn + "\n" + opusReply;
    std::vector<UsageEvent> events;
    reader.parseFile(file, events);
    EXPECT_EQ(events, (std::vector<UsageEvent>{fullSonnetEvent, fullSonnetEvent, fullOpusEvent}));

    // Events are appended to what the list already holds.
    reader.parseFile(reply + "\n" + opusReply.substr(0, opusReply.size() - 10), events);
    EXPECT_EQ(events, (std::vector<UsageEvent>{fullSonnetEvent, fullSonnetEvent, fullOpusEvent, fullSonnetEvent}));

    // A line far longer than any other, then an ordinary one: both read exactly.
    const std::string longReply =
        assistantLine(fullUsage).replace(assistantLine(fullUsage).find(R"("ok")"), 4, '"' + std::string(20 << 20, 'x') + '"');
    events.clear();
    reader.parseFile(longReply + "\n" + opusReply, events);
    EXPECT_EQ(events, (std::vector<UsageEvent>{fullSonnetEvent, fullOpusEvent}));

    std::vector<UsageEvent> none;
    reader.parseFile("", none);
    reader.parseFile("\n\n\r\n", none);
    reader.parseFile(std::string("\0\0\0", 3), none);
    EXPECT_TRUE(none.empty());
}

TEST(ClaudeCodeReaderTest, RealisticLineShape) {
    const std::string line =
        R"({"parentUuid":"6f1c","isSidechain":false,"userType":"external","cwd":"/home/dev/app","sessionId":"a1b2",)"
        R"("version":"2.0.14","gitBranch":"main","message":{"id":"msg_01X","type":"message","role":"assistant",)"
        R"("model":"claude-haiku-4-5-20251001","content":[{"type":"tool_use","id":"toolu_01","name":"Read",)"
        R"("input":{"file_path":"/home/dev/app/src/main.swift"}}],"stop_reason":null,"stop_sequence":null,)"
        R"("usage":{"input_tokens":8,"cache_creation_input_tokens":4000,"cache_read_input_tokens":90000,)"
        R"("cache_creation":{"ephemeral_5m_input_tokens":4000,"ephemeral_1h_input_tokens":0},"output_tokens":600,)"
        R"("service_tier":"standard"}},"requestId":"req_011","type":"assistant","uuid":"u1",)"
        R"("timestamp":"2025-01-31T09:15:02.000Z"})";
    // Haiku 4.5: 1×8 + 1.25×4000 + 0.1×90000 + 5×600 = 17008 $/M → 1.7008 → 2 cents;
    // water (0.1 × 4008 + 600) × 0.1125 = 112.59 → 113 ml.
    EXPECT_EQ(parsedLine(line), (std::vector<UsageEvent>{UsageEvent{loggedAt, 4008, 600, 2, 113}}));
}

TEST(ClaudeCodeReaderDeathTest, InputTokenSumOverflowStopsTheProcess) {
    const std::string line =
        assistantLine(R"({"input_tokens":9223372036854775807,"cache_creation_input_tokens":1,"output_tokens":1})");
    EXPECT_DEATH(parsedLine(line), "overflow");
}

}  // namespace
}  // namespace tallowen
