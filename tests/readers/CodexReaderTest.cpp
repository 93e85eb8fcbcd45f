#include "readers/CodexReader.hpp"
#include "support/UsagePrinting.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tallowen {
namespace {

constexpr Date loggedAt{760007702.0};  // 2025-01-31T09:15:02Z

std::string settings(std::string_view model) {
    return R"({"timestamp":"2025-01-31T09:00:00Z","type":"event_msg","payload":{"type":"thread_settings_applied",)"
           R"("thread_settings":{"model":)" + std::string(model) + "}}}";
}

// The running totals beside the last request's usage are never read.
std::string usage(std::string_view input, std::string_view cached, std::string_view output) {
    return R"({"total_token_usage":{"input_tokens":99999999,"output_tokens":99999999},)"
           R"("last_token_usage":{"input_tokens":)" +
           std::string(input) + R"(,"cached_input_tokens":)" + std::string(cached) + R"(,"output_tokens":)" +
           std::string(output) + "}}";
}

std::string tokenCount(std::string_view info, std::string_view limits = "null",
                       std::string_view timestamp = "2025-01-31T09:15:02Z") {
    return R"({"timestamp":")" + std::string(timestamp) +
           R"(","type":"event_msg","payload":{"type":"token_count","info":)" +
           std::string(info) + R"(,"rate_limits":)" + std::string(limits) + "}}";
}

const std::string large = usage("120000", "100000", "3000");
// Water (0.1 × 20000 + 3000) × 0.1125 = 562.5 → 563 ml. Cost, default
// 1.75×120000 + 0.17500000000000002×100000 + 14×3000 = 269500.00000000006 $/M → 27 cents;
// gpt-5 192500 → 19; o3-mini 314000 → 31.
const UsageEvent atDefault{loggedAt, 120000, 3000, 27, 563}, atGptFive{loggedAt, 120000, 3000, 19, 563},
    atReasoning{loggedAt, 120000, 3000, 31, 563};

TEST(CodexReaderTest, ThreadSettingsChooseThePriceOfLaterRecords) {
    std::string file;
    for (const std::string& line :
         {tokenCount(large), settings(R"("gpt-5")"), tokenCount(large),
          // Names the record kind but does not parse, or names no string: the model stays.
          settings(R"("o3-mini"}}})"), settings("5"), settings("null"), tokenCount(large),
          settings(R"("o3-mini")"), tokenCount(large), std::string()})
        file += line + "\n";
    CodexFileState state;
    CodexReader().parseFile(file, state);
    EXPECT_EQ(state.events, (std::vector<UsageEvent>{atDefault, atGptFive, atGptFive, atReasoning}));
    EXPECT_EQ(state.model, "o3-mini");
    EXPECT_FALSE(state.quota);

    // A record that is both applies its model before its own tokens are priced.
    CodexFileState both;
    CodexReader().parseLine(R"({"timestamp":"2025-01-31T09:15:02Z","payload":{"type":"token_count","x":)"
                            R"("thread_settings_applied","thread_settings":{"model":"gpt-5"},"info":)" + large + "}}",
                            both);
    EXPECT_EQ(both.events, (std::vector<UsageEvent>{atGptFive}));
}

TEST(CodexReaderTest, OneTokenCountLine) {
    const std::string stamped = R"({"timestamp":"2025-01-31T09:15:02Z",)";
    constexpr std::optional<UsageEvent> none;
    const std::pair<std::string, std::optional<UsageEvent>> cases[] = {
        // The input keeps its cached tokens: 3290.0000000000005 $/M → 0 cents; (0.1 × 200 + 100) × 0.1125 → 14 ml.
        {tokenCount(usage("1000", "800", "100")), UsageEvent{loggedAt, 1000, 100, 0, 14}},
        // Water weight floored at 0: 10 × 0.1125 = 1.125 → 1 ml (a negative weight would give -3).
        {tokenCount(usage("100", "500", "10")), UsageEvent{loggedAt, 100, 10, 0, 1}},
        {tokenCount(usage("0", "0", "1")), UsageEvent{loggedAt, 0, 1, 0, 0}}, {tokenCount(usage("0", "0", "0")), none},
        {tokenCount(usage("12.5", "true", R"("7")")), none}, {tokenCount("null"), none},
        {tokenCount(R"({"total_token_usage":{"input_tokens":5}})"), none},
        {R"({"timestamp": "2025-01-31T09:15:02Z", "payload": {"type": "token_count", "info": )" + large + "}}",
         atDefault},
        {tokenCount(large) + "\r", atDefault}, {tokenCount(large, "null", "2025-01-31 09:15:02Z"), none},
        {R"({"payload":{"type":"token_count","info":)" + large + "}}", none},
        {stamped + R"("type":"token_count","payload":[)" + large + "]}", none},
        {stamped + R"("payload":{"type":"token_count_delta","info":)" + large + "}}", none},
        {"[" + tokenCount(large) + "]", none}, {tokenCount(large, "\"\xc3\x28\""), none},  // invalid UTF-8
        {stamped + R"("type":"response_item","payload":{"type":"message","text":"count my token_count"}})", none},
    };
    for (const auto& [line, expected] : cases) {
        CodexFileState state;
        CodexReader().parseLine(line, state);
        EXPECT_EQ(state.events, expected ? std::vector<UsageEvent>{*expected} : std::vector<UsageEvent>{}) << line;
    }
}

TEST(CodexReaderTest, LatestRateLimitSnapshotWins) {
    // 1738332000 is 2025-01-31T14:00:00Z, written once as an integer and once with ".0".
    const std::string limits = R"({"primary":{"used_percent":12.5,"window_minutes":300,"resets_at":1738332000},)"
                               R"("secondary":{"used_percent":40,"resets_at":1738332000.0},"plan_type":"plus"})";
    const std::string other = R"({"primary":{"used_percent":99.0},"plan_type":"pro"})";
    const Date resetAt = Date::fromUnixSeconds(1738332000.0);
    const QuotaSnapshot expected{loggedAt, 12.5, resetAt, 40.0, resetAt, "plus"};
    CodexReader reader;
    CodexFileState state;
    reader.parseLine(tokenCount("null", limits), state);
    EXPECT_TRUE(state.events.empty());
    // Earlier or at the same instant, no limits, or a broken timestamp: kept as it is.
    reader.parseLine(tokenCount("null", other, "2025-01-31T09:15:01Z"), state);
    reader.parseLine(tokenCount("null", other, "2025-01-31T09:15:02Z"), state);
    reader.parseLine(tokenCount(large, "null", "2025-01-31T10:00:00Z"), state);
    reader.parseLine(tokenCount("null", other, "2025-01-31T10:00:00"), state);
    EXPECT_EQ(state.quota, expected);
    // Strictly later replaces; values of the wrong type are absent.
    const std::string wrongTypes = R"({"primary":{"used_percent":"7","resets_at":"x"},"secondary":[],"plan_type":3})";
    reader.parseLine(tokenCount(large, wrongTypes, "2025-01-31T09:15:03Z"), state);
    EXPECT_EQ(state.quota, (QuotaSnapshot{Date{760007703.0}, {}, {}, {}, {}, {}}));
    EXPECT_EQ(state.events.size(), 2u);
}

TEST(CodexReaderDeathTest, TokenArithmeticOverflowStopsTheProcess) {
    CodexFileState state;
    EXPECT_DEATH(CodexReader().parseLine(tokenCount(usage("9223372036854775807", "0", "1")), state), "overflow");
    EXPECT_DEATH(CodexReader().parseLine(tokenCount(usage("-5", "9223372036854775807", "10")), state), "overflow");
}

}  // namespace
}  // namespace tallowen
