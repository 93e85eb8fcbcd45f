#include "readers/CodexReader.hpp"
#include "support/UsagePrinting.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tallowen {
namespace {

// 2025-01-31T09:15:02Z.
constexpr Date loggedAt{760007702.0};

std::string settingsLine(std::string_view modelJson) {
    return R"({"timestamp":"2025-01-31T09:00:00Z","type":"event_msg","payload":{"type":"thread_settings_applied",)"
           R"("thread_settings":{"model":)" +
           std::string(modelJson) + "}}}";
}

std::string lastUsage(std::string_view input, std::string_view cached, std::string_view output) {
    // The running totals beside the last request's usage are never read.
    return R"({"total_token_usage":{"input_tokens":99999999,"cached_input_tokens":0,"output_tokens":99999999},)"
           R"("last_token_usage":{"input_tokens":)" +
           std::string(input) + R"(,"cached_input_tokens":)" + std::string(cached) + R"(,"output_tokens":)" +
           std::string(output) + R"(},"model_context_window":272000})";
}

std::string tokenCountLine(std::string_view info, std::string_view rateLimits = "null",
                           std::string_view timestamp = R"("2025-01-31T09:15:02Z")") {
    return R"({"timestamp":)" + std::string(timestamp) + R"(,"type":"event_msg","payload":{"type":"token_count","info":)" +
           std::string(info) + R"(,"rate_limits":)" + std::string(rateLimits) + "}}";
}

const std::string largeRequest = lastUsage("120000", "100000", "3000");
// Water for largeRequest: (0.1 × 20000 + 3000) × 0.1125 = 562.5 → 563 ml, whatever the model.
// Codex default: 1.75×120000 + 0.17500000000000002×100000 + 14×3000 = 269500.00000000006 $/M → 26.95… → 27 cents.
const UsageEvent largeAtDefaultPrice{loggedAt, 120000, 3000, 27, 563};
// gpt-5: 1.25×120000 + 0.125×100000 + 10×3000 = 192500 $/M → 19.25 → 19 cents.
const UsageEvent largeAtGptFivePrice{loggedAt, 120000, 3000, 19, 563};
// o3-mini: 2×120000 + 0.5×100000 + 8×3000 = 314000 $/M → 31.4 → 31 cents.
const UsageEvent largeAtReasoningPrice{loggedAt, 120000, 3000, 31, 563};

TEST(CodexReaderTest, ThreadSettingsChooseThePriceOfLaterRecords) {
    const std::string lines[] = {
        tokenCountLine(largeRequest),
        settingsLine(R"("gpt-5")"),
        tokenCountLine(largeRequest),
        // Names the record kind but does not parse: the model stays.
        R"({"timestamp":"2025-01-31T09:00:00Z","payload":{"type":"thread_settings_applied","thread_settings":{"model":"o3-mini")",
        settingsLine("5"),
        settingsLine("null"),
        tokenCountLine(largeRequest),
        settingsLine(R"("o3-mini")"),
        tokenCountLine(largeRequest),
    };
    std::string file;
    for (const std::string& line : lines) file += line + "\n";

    CodexReader reader;
    CodexFileState state;
    reader.parseFile(file, state);
    EXPECT_EQ(state.events, (std::vector<UsageEvent>{largeAtDefaultPrice, largeAtGptFivePrice, largeAtGptFivePrice,
                                                     largeAtReasoningPrice}));
    EXPECT_EQ(state.model, "o3-mini");
    EXPECT_FALSE(state.quota.has_value());

    // A record that is both applies its model before its own tokens are priced.
    CodexFileState both;
    reader.parseLine(
        R"({"timestamp":"2025-01-31T09:15:02Z","payload":{"type":"token_count","note":"thread_settings_applied",)"
        R"("thread_settings":{"model":"gpt-5"},"info":)" +
            largeRequest + "}}",
        both);
    EXPECT_EQ(both.events, (std::vector<UsageEvent>{largeAtGptFivePrice}));
}

TEST(CodexReaderTest, OneTokenCountLine) {
    struct Case {
        const char* why;
        std::string line;
        std::optional<UsageEvent> expected;
    };
    const Case cases[] = {
        // Cost 1.75×1000 + 0.17500000000000002×800 + 14×100 = 3290.0000000000005 $/M → 0.329 → 0 cents;
        // water (0.1 × 200 + 100) × 0.1125 = 13.5 → 14 ml. The stored input keeps the cached tokens.
        {"cached tokens inside the input", tokenCountLine(lastUsage("1000", "800", "100")),
         UsageEvent{loggedAt, 1000, 100, 0, 14}},
        // Water weight floored at 0: (0 + 10) × 0.1125 = 1.125 → 1 ml (a negative weight would give -3).
        {"more cached than input", tokenCountLine(lastUsage("100", "500", "10")), UsageEvent{loggedAt, 100, 10, 0, 1}},
        {"one output token is a request", tokenCountLine(lastUsage("0", "0", "1")), UsageEvent{loggedAt, 0, 1, 0, 0}},
        {"no tokens is no request", tokenCountLine(lastUsage("0", "0", "0")), std::nullopt},
        {"tokens that are not integers count as 0", tokenCountLine(lastUsage("12.5", "true", R"("7")")), std::nullopt},
        {"info that is null", tokenCountLine("null"), std::nullopt},
        {"info without the last request", tokenCountLine(R"({"total_token_usage":{"input_tokens":5}})"), std::nullopt},
        {"blanks after colons", R"({"timestamp": "2025-01-31T09:15:02Z", "payload": {"type": "token_count", "info": )" +
                                    largeRequest + "}}",
         largeAtDefaultPrice},
        {"a carriage return before the line feed", tokenCountLine(largeRequest) + "\r", largeAtDefaultPrice},
        {"a timestamp with a blank instead of T",
         tokenCountLine(largeRequest, "null", R"("2025-01-31 09:15:02Z")"), std::nullopt},
        {"no timestamp", R"({"payload":{"type":"token_count","info":)" + largeRequest + "}}", std::nullopt},
        {"a payload that is not an object",
         R"({"timestamp":"2025-01-31T09:15:02Z","type":"token_count","payload":[)" + largeRequest + "]}",
         std::nullopt},
        {"the kind must be written with its quotes",
         R"({"timestamp":"2025-01-31T09:15:02Z","payload":{"type":"token_count_delta","info":)" + largeRequest + "}}",
         std::nullopt},
        {"a top level that is an array", "[" + tokenCountLine(largeRequest) + "]", std::nullopt},
        {"invalid UTF-8", tokenCountLine(largeRequest, "\"\xc3\x28\""), std::nullopt},
    };
    for (const Case& c : cases) {
        CodexReader reader;
        CodexFileState state;
        reader.parseLine(c.line, state);
        if (c.expected) {
            ASSERT_EQ(state.events.size(), 1u) << c.why;
            EXPECT_EQ(state.events.front(), *c.expected) << c.why;
        } else {
            EXPECT_TRUE(state.events.empty()) << c.why;
        }
    }
}

TEST(CodexReaderTest, LatestRateLimitSnapshotWins) {
    // 1738332000 is 2025-01-31T14:00:00Z; written once as an integer and once with ".0".
    const std::string limits =
        R"({"primary":{"used_percent":12.5,"window_minutes":300,"resets_at":1738332000},)"
        R"("secondary":{"used_percent":40,"window_minutes":10080,"resets_at":1738332000.0},"plan_type":"plus"})";
    CodexReader reader;
    CodexFileState state;

    reader.parseLine(tokenCountLine("null", limits), state);
    ASSERT_TRUE(state.quota.has_value());
    EXPECT_TRUE(state.events.empty());
    const QuotaSnapshot expected{loggedAt, 12.5, Date::fromUnixSeconds(1738332000.0), 40.0,
                                 Date::fromUnixSeconds(1738332000.0), "plus"};
    EXPECT_EQ(*state.quota, expected);

    // Earlier, or at the same instant: kept as it is, even though later in the file.
    const std::string otherLimits = R"({"primary":{"used_percent":99.0},"plan_type":"pro"})";
    reader.parseLine(tokenCountLine("null", otherLimits, R"("2025-01-31T09:15:01Z")"), state);
    reader.parseLine(tokenCountLine("null", otherLimits, R"("2025-01-31T09:15:02Z")"), state);
    EXPECT_EQ(*state.quota, expected);
    // No rate limits, or a broken timestamp: nothing changes.
    reader.parseLine(tokenCountLine(largeRequest, "null", R"("2025-01-31T10:00:00Z")"), state);
    reader.parseLine(tokenCountLine("null", otherLimits, R"("2025-01-31T10:00:00")"), state);
    EXPECT_EQ(*state.quota, expected);

    // Strictly later replaces; values of the wrong type are simply absent.
    reader.parseLine(tokenCountLine(largeRequest,
                                    R"({"primary":{"used_percent":"7","resets_at":"soon"},"secondary":[],"plan_type":3})",
                                    R"("2025-01-31T09:15:03Z")"),
                     state);
    EXPECT_EQ(*state.quota, (QuotaSnapshot{Date{760007703.0}, {}, {}, {}, {}, {}}));
    EXPECT_EQ(state.events.size(), 2u);
}

TEST(CodexReaderTest, EmptyAndOtherLines) {
    CodexReader reader;
    CodexFileState state;
    reader.parseFile("", state);
    reader.parseFile("\n\r\n\n", state);
    reader.parseLine("", state);
    reader.parseFile(
        R"({"timestamp":"2025-01-31T09:15:02Z","type":"response_item","payload":{"type":"message","role":"user","content":[{"type":"input_text","text":"count my token_count"}]}})"
        "\n",
        state);
    EXPECT_TRUE(state.events.empty());
    EXPECT_FALSE(state.model.has_value());
    EXPECT_FALSE(state.quota.has_value());
}

TEST(CodexReaderDeathTest, TokenArithmeticOverflowStopsTheProcess) {
    CodexReader reader;
    CodexFileState state;
    EXPECT_DEATH(reader.parseLine(tokenCountLine(lastUsage("9223372036854775807", "0", "1")), state), "overflow");
    EXPECT_DEATH(reader.parseLine(tokenCountLine(lastUsage("-5", "9223372036854775807", "10")), state), "overflow");
}

}  // namespace
}  // namespace tallowen
