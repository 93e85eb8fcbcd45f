#include "readers/ClaudeCodeReader.hpp"
#include "readers/CodexReader.hpp"
#include "readers/UsageReaders.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"
#include "support/UsagePrinting.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace tallowen {
namespace {

constexpr Date loggedAt{760007702.0};  // 2025-01-31T09:15:02Z

// Claude Code

const std::string sonnet = R"("model":"claude-sonnet-4-5-20250929",)";
const std::string opus = R"("model":"claude-opus-4-1-20250805",)";
const std::string fullUsage =
    R"({"input_tokens":1200,"cache_creation_input_tokens":8000,"cache_read_input_tokens":150000,"output_tokens":2000})";

std::string reply(const std::string& usage = fullUsage, const std::string& model = sonnet,
                  const std::string& timestamp = "2025-01-31T09:15:02Z") {
    return R"({"parentUuid":"p1","type":"assistant","timestamp":")" + timestamp + R"(","message":{)" + model +
           R"("role":"assistant","content":[{"type":"text","text":"ok"}],"usage":)" + usage + "}}";
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

TEST(ClaudeCodeReaderTest, OneLine) {
    const std::string assistant = R"({"type":"assistant","timestamp":"2025-01-31T09:15:02Z",)";
    const std::pair<std::string, std::vector<UsageEvent>> cases[] = {
        // Sonnet's price, then without a model name the catch-all one.
        {reply(), {fullSonnet}}, {reply(fullUsage, ""), {fullOpus}}, {reply(fullUsage, R"("model":5,)"), {fullOpus}},
        // Cache reads stay out of the input: 10 + 5 = 15 in; 378.75 $/M → 0 cents; 0.39375 → 0 ml.
        {reply(R"({"input_tokens":10,"cache_creation_input_tokens":5,"cache_read_input_tokens":1000,)"
               R"("output_tokens":2})"),
         {UsageEvent{loggedAt, 15, 2, 0, 0}}},
        // Tokens that are not integers written as integers count as 0.
        {reply(R"({"input_tokens":12.5,"cache_creation_input_tokens":"12","cache_read_input_tokens":true,)"
               R"("output_tokens":40000})", opus), {outputOnly}},
        {reply(R"({"input_tokens":12.0,"cache_creation_input_tokens":null,"output_tokens":1e3})"), {nothingCounted}},
        {reply("{}"), {nothingCounted}}, {reply("null"), {}},
        {reply(fullUsage, sonnet, "2025-01-31 09:15:02"), {}},
        // Only the bytes "type":"assistant" and "usage" decide the kind, wherever they are.
        {R"({"type":"assistant", "timestamp": "2025-01-31T09:15:02Z", "message": {"model": "claude-sonnet-4-5", )"
         R"("usage": {"input_tokens": 1200, "cache_creation_input_tokens": 8000, "cache_read_input_tokens": 150000, )"
         R"("output_tokens": 2000}}})", {fullSonnet}},
        {R"({"type": "assistant","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":5}}})", {}},
        {R"({"type":"user","timestamp":"2025-01-31T09:15:02Z","message":{"usage":{"output_tokens":40000},)"
         R"("content":[{"type":"assistant"}]}})", {outputOnly}},
        {assistant + R"("usage":{"output_tokens":5}})", {}}, {assistant + R"("message":"usage","x":{"usage":{}}})", {}},
        {"[" + reply() + "]", {}},
        // As Claude Code writes it, Haiku 4.5: 1×8 + 1.25×4000 + 0.1×90000 + 5×600 = 17008 $/M → 2 cents; 113 ml.
        {R"({"parentUuid":"6f1c","isSidechain":false,"cwd":"/home/dev/app","sessionId":"a1b2","version":"2.0.14",)"
         R"("message":{"id":"msg_01X","type":"message","role":"assistant","model":"claude-haiku-4-5-20251001",)"
         R"("content":[{"type":"tool_use","id":"toolu_01","name":"Read","input":{"file_path":"/a/main.swift"}}],)"
         R"("stop_reason":null,"usage":{"input_tokens":8,"cache_creation_input_tokens":4000,)"
         R"("cache_read_input_tokens":90000,"cache_creation":{"ephemeral_5m_input_tokens":4000},"output_tokens":600,)"
         R"("service_tier":"standard"}},"requestId":"req_011","type":"assistant",)"
         R"("timestamp":"2025-01-31T09:15:02.000Z"})",
         {UsageEvent{loggedAt, 4008, 600, 2, 113}}},
    };
    for (const auto& [line, expected] : cases) EXPECT_EQ(parsed(line), expected) << line;
}

TEST(ClaudeCodeReaderTest, WholeFile) {
    const std::string user = R"({"type":"user","timestamp":"2025-01-31T09:15:00Z","message":{"content":"hello"}})";
    // The same reply twice counts twice, once on a line far longer than the others; blank lines and CRLF ends
    // are harmless, and a line cut short after one that shares its start is no reply.
    std::string longReply = reply();
    longReply.replace(longReply.find(R"("ok")"), 4, '"' + std::string(20 << 20, 'x') + '"');
    EXPECT_EQ(parsed(user + "\n" + longReply + "\r\n\n\n" + reply() + "\n" + user + "\n" + reply(fullUsage, opus) +
                     "\n" + reply().substr(0, 100)),
              (std::vector<UsageEvent>{fullSonnet, fullSonnet, fullOpus}));
    EXPECT_TRUE(parsed(std::string("\n\n\r\n\0\0\0", 7)).empty());
}

TEST(ClaudeCodeReaderDeathTest, InputTokenSumOverflowStopsTheProcess) {
    EXPECT_DEATH(parsed(reply(R"({"input_tokens":9223372036854775807,"cache_creation_input_tokens":1})")), "overflow");
}

// Codex

CodexFileState codexParsed(std::string_view file) {
    CodexFileState state;
    CodexReader().parseFile(file, state);
    return state;
}

std::string settings(const std::string& model) {
    return R"({"timestamp":"2025-01-31T09:00:00Z","type":"event_msg","payload":{"type":"thread_settings_applied",)"
           R"("thread_settings":{"model":)" + model + "}}}";
}

// The running totals beside the last request's usage are never read.
std::string usage(const std::string& input, const std::string& cached, const std::string& output) {
    return R"({"total_token_usage":{"input_tokens":99999999,"output_tokens":99999999},)"
           R"("last_token_usage":{"input_tokens":)" + input + R"(,"cached_input_tokens":)" + cached +
           R"(,"output_tokens":)" + output + "}}";
}

std::string tokenCount(const std::string& info, const std::string& limits = "null",
                       const std::string& timestamp = "2025-01-31T09:15:02Z") {
    return R"({"timestamp":")" + timestamp + R"(","type":"event_msg","payload":{"type":"token_count","info":)" + info +
           R"(,"rate_limits":)" + limits + "}}";
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
    EXPECT_EQ(codexParsed(file).events, (std::vector<UsageEvent>{atDefault, atGptFive, atGptFive, atReasoning}));

    // A record that is both applies its model before its own tokens are priced.
    const std::string both = R"({"timestamp":"2025-01-31T09:15:02Z","payload":{"type":"token_count","x":)"
                             R"("thread_settings_applied","thread_settings":{"model":"gpt-5"},"info":)" + large + "}}";
    EXPECT_EQ(codexParsed(both).events, (std::vector<UsageEvent>{atGptFive}));
}

TEST(CodexReaderTest, OneTokenCountLine) {
    const std::string stamped = R"({"timestamp":"2025-01-31T09:15:02Z",)";
    const std::pair<std::string, std::vector<UsageEvent>> cases[] = {
        // The input keeps its cached tokens: 3290.0000000000005 $/M → 0 cents; (0.1 × 200 + 100) × 0.1125 → 14 ml.
        {tokenCount(usage("1000", "800", "100")), {UsageEvent{loggedAt, 1000, 100, 0, 14}}},
        // Water weight floored at 0: 10 × 0.1125 = 1.125 → 1 ml (a negative weight would give -3).
        {tokenCount(usage("100", "500", "10")), {UsageEvent{loggedAt, 100, 10, 0, 1}}},
        {tokenCount(usage("0", "0", "1")), {UsageEvent{loggedAt, 0, 1, 0, 0}}},
        {tokenCount(usage("0", "0", "0")), {}},
        {tokenCount(usage("12.5", "true", R"("7")")), {}}, {tokenCount("null"), {}},
        {tokenCount(R"({"total_token_usage":{"input_tokens":5}})"), {}},
        {R"({"timestamp": "2025-01-31T09:15:02Z", "payload": {"type": "token_count", "info": )" + large + "}}",
         {atDefault}},
        {tokenCount(large) + "\r", {atDefault}}, {tokenCount(large, "null", "2025-01-31 09:15:02Z"), {}},
        {R"({"payload":{"type":"token_count","info":)" + large + "}}", {}},
        {stamped + R"("type":"token_count","payload":[)" + large + "]}", {}},
        {stamped + R"("payload":{"type":"token_count_delta","info":)" + large + "}}", {}},
        {"[" + tokenCount(large) + "]", {}}, {tokenCount(large, "\"\xc3\x28\""), {}},  // invalid UTF-8
    };
    for (const auto& [line, expected] : cases) EXPECT_EQ(codexParsed(line).events, expected) << line;
}

TEST(CodexReaderTest, LatestRateLimitSnapshotWins) {
    // 1738332000 is 2025-01-31T14:00:00Z, written once as an integer and once with ".0".
    const std::string limits = R"({"primary":{"used_percent":12.5,"window_minutes":300,"resets_at":1738332000},)"
                               R"("secondary":{"used_percent":40,"resets_at":1738332000.0},"plan_type":"plus"})";
    const std::string other = R"({"primary":{"used_percent":99.0},"plan_type":"pro"})";
    const Date resetAt = Date::fromUnixSeconds(1738332000.0);
    // Then earlier or at the same instant, no limits, or a broken timestamp: kept as it is.
    CodexFileState state = codexParsed(
        tokenCount("null", limits) + "\n" + tokenCount("null", other, "2025-01-31T09:15:01Z") + "\n" +
        tokenCount("null", other, "2025-01-31T09:15:02Z") + "\n" + tokenCount(large, "null", "2025-01-31T10:00:00Z") +
        "\n" + tokenCount("null", other, "2025-01-31T10:00:00"));
    EXPECT_EQ(state.quota, (QuotaSnapshot{loggedAt, 12.5, resetAt, 40.0, resetAt, "plus"}));
    // Strictly later replaces; values of the wrong type are absent.
    const std::string wrongTypes = R"({"primary":{"used_percent":"7","resets_at":"x"},"secondary":[],"plan_type":3})";
    CodexReader().parseLine(tokenCount(large, wrongTypes, "2025-01-31T09:15:03Z"), state);
    EXPECT_EQ(state.quota, (QuotaSnapshot{Date{760007703.0}, {}, {}, {}, {}, {}}));
    EXPECT_EQ(state.events.size(), 2u);
}

TEST(CodexReaderDeathTest, TokenArithmeticOverflowStopsTheProcess) {
    EXPECT_DEATH(codexParsed(tokenCount(usage("9223372036854775807", "0", "1"))), "overflow");
    EXPECT_DEATH(codexParsed(tokenCount(usage("-5", "9223372036854775807", "10"))), "overflow");
}

// Both readers over a home of logs of many sizes, whose lines fall at random places across
// the edges of small windows, some lines longer than three of them.
TEST(UsageReadersTest, ResultsAreTheSameWhateverTheThreadsAndWindows) {
    const testing::ScopedTimeZone zone("America/New_York");
    std::mt19937 random(20250314);
    const auto number = [&](int low, int high) {
        return std::to_string(std::uniform_int_distribution(low, high)(random));
    };
    const auto padding = [&](int most) { return std::string(std::stoul(number(0, most)), 'x'); };
    const auto timestamp = [&] {
        return "2025-03-1" + number(0, 6) + "T" + number(10, 23) + ":" + number(10, 59) + ":" + number(10, 59) + ".5Z";
    };
    testing::TempDir home;
    for (int file = 0; file < 32; ++file) {
        const bool codex = file >= 24;
        std::string log;
        for (int line = std::stoi(number(0, 40)); line > 0; --line) {
            const std::string kind = number(0, 2);
            if (kind == "0")  // read by neither reader
                log += R"({"type":"user","message":{"content":")" + padding(13000) + "\"}}\n";
            else if (codex && kind == "1")
                log += settings(number(0, 1) == "1" ? R"("gpt-5")" : R"("o3-mini")") + "\n";
            else if (codex)
                log += tokenCount(usage(number(0, 90000), number(0, 50000), number(0, 3000)),
                                  R"({"primary":{"used_percent":)" + number(0, 100) + "}}", timestamp()) + "\n";
            else
                log += reply(R"({"input_tokens":)" + number(0, 5000) + R"(,"cache_read_input_tokens":)" +
                                 number(0, 90000) + R"(,"output_tokens":)" + number(0, 900) + "}",
                             number(0, 1) == "1" ? sonnet : opus, timestamp()) + "\n";
        }
        const std::string name = "/s" + std::to_string(file) + ".jsonl";
        home.write(!codex      ? ".claude/projects/p" + std::to_string(file % 3) + name
                   : file % 2 ? ".codex/sessions/2025/03/14" + name
                              : ".codex/archived_sessions" + name, log);
    }

    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    std::optional<CursorDayCache> noCursor;
    FileEntries oneThreadFiles;
    const LogReadOutcome oneThread =
        readAllLogs(home.path(), oneThreadFiles, noCursor, LocalCalendar{}, {.workerThreads = 1, .windowBytes = page});
    for (const auto& [tool, days] : oneThread.results) EXPECT_GT(days.size(), 3u);
    for (const ScanSettings& settings : {ScanSettings{.workerThreads = 2, .windowBytes = page},
                                         ScanSettings{.workerThreads = 2},
                                         ScanSettings{.workerThreads = 3, .windowBytes = 3 * page}}) {
        SCOPED_TRACE(::testing::Message() << settings.workerThreads << " threads, window " << settings.windowBytes);
        FileEntries files;
        EXPECT_EQ(readAllLogs(home.path(), files, noCursor, LocalCalendar{}, settings).results, oneThread.results);
        EXPECT_EQ(files, oneThreadFiles);
    }
}

}  // namespace
}  // namespace tallowen
