// Reading speed of the Claude Code and Codex readers on synthetic in-memory
// logs shaped like real ones: most bytes are user turns and tool results of
// 1 to 10 KB, about one line in ten is a usage record.

#include "readers/ClaudeCodeReader.hpp"
#include "readers/CodexReader.hpp"
#include "readers/LineSplitter.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tallowen {
namespace {

constexpr size_t logBytes = 32u << 20;

class TextMaker {
public:
    explicit TextMaker(uint32_t seed) : random_(seed) {}

    // JSON string content that looks like code and shell output, escapes included.
    std::string text(size_t bytes) {
        static const char* const words[] = {"the", "a", "function", "returns", "value", "error", "file", "test",
                                            "build", "import", "struct", "class", "let", "var", "for", "in",
                                            "if", "else", "return", "self", "async", "await", "\\\"name\\\":",
                                            "\\n", "{", "}", "\\t", "0.25", "\\\"type\\\"", "usage", "1200"};
        constexpr size_t wordCount = sizeof(words) / sizeof(words[0]);
        std::string out;
        out.reserve(bytes + 16);
        while (out.size() < bytes) {
            out += words[number(0, wordCount - 1)];
            out += ' ';
        }
        return out;
    }

    size_t number(size_t low, size_t high) { return std::uniform_int_distribution<size_t>(low, high)(random_); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random_); }

    std::string timestamp() {
        const size_t hour = number(0, 23);
        const size_t minute = number(0, 59);
        std::string out = "2025-03-14T";
        out += static_cast<char>('0' + hour / 10);
        out += static_cast<char>('0' + hour % 10);
        out += ':';
        out += static_cast<char>('0' + minute / 10);
        out += static_cast<char>('0' + minute % 10);
        out += ":07.123Z";
        return out;
    }

private:
    std::mt19937 random_;
};

std::string claudeCodeLog() {
    TextMaker maker(7);
    std::string log;
    log.reserve(logBytes + 16384);
    while (log.size() < logBytes) {
        if (maker.chance(0.1)) {
            log += R"({"parentUuid":"1b7e","isSidechain":false,"userType":"external","cwd":"/home/dev/app",)"
                   R"("sessionId":"6f1c","version":"2.0.14","gitBranch":"main","message":{"id":"msg_01X",)"
                   R"("type":"message","role":"assistant","model":"claude-sonnet-4-5-20250929","content":[)"
                   R"({"type":"text","text":")";
            log += maker.text(maker.number(50, 1500));
            log += R"("}],"stop_reason":null,"stop_sequence":null,"usage":{"input_tokens":)";
            log += std::to_string(maker.number(3, 1200));
            log += R"(,"cache_creation_input_tokens":)";
            log += std::to_string(maker.number(0, 9000));
            log += R"(,"cache_read_input_tokens":)";
            log += std::to_string(maker.number(0, 180000));
            log += R"(,"output_tokens":)";
            log += std::to_string(maker.number(1, 2500));
            log += R"(,"service_tier":"standard"}},"requestId":"req_011","type":"assistant","uuid":"a1",)"
                   R"("timestamp":")";
            log += maker.timestamp();
            log += "\"}\n";
        } else {
            log += R"({"parentUuid":"1b7e","isSidechain":false,"userType":"external","cwd":"/home/dev/app",)"
                   R"("sessionId":"6f1c","version":"2.0.14","gitBranch":"main","type":"user","message":)"
                   R"({"role":"user","content":[{"tool_use_id":"toolu_01","type":"tool_result","content":")";
            log += maker.text(maker.number(1000, 10000));
            log += R"("}]},"uuid":"u1","timestamp":")";
            log += maker.timestamp();
            log += "\"}\n";
        }
    }
    return log;
}

std::string codexLog() {
    TextMaker maker(11);
    std::string log;
    log.reserve(logBytes + 16384);
    while (log.size() < logBytes) {
        const size_t kind = maker.number(0, 99);
        log += R"({"timestamp":")";
        log += maker.timestamp();
        if (kind < 2) {
            log += R"(","type":"event_msg","payload":{"type":"thread_settings_applied","thread_settings":{"model":")";
            log += maker.chance(0.5) ? "gpt-5.1-codex" : "o3-mini";
            log += "\"}}}\n";
        } else if (kind < 12) {
            log += R"(","type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":)"
                   R"({"input_tokens":900000,"cached_input_tokens":700000,"output_tokens":30000,"total_tokens":930000},)"
                   R"("last_token_usage":{"input_tokens":)";
            log += std::to_string(maker.number(2000, 120000));
            log += R"(,"cached_input_tokens":)";
            log += std::to_string(maker.number(0, 2000));
            log += R"(,"output_tokens":)";
            log += std::to_string(maker.number(0, 3000));
            log += R"(},"model_context_window":272000},"rate_limits":{"primary":{"used_percent":12.5,)"
                   R"("window_minutes":300,"resets_at":1741950000},"secondary":{"used_percent":40.0,)"
                   R"("window_minutes":10080,"resets_at":1742400000},"plan_type":"plus"}}})"
                   "\n";
        } else {
            log += R"(","type":"response_item","payload":{"type":"function_call_output","call_id":"call_x","output":")";
            log += maker.text(maker.number(1000, 10000));
            log += "\"}}\n";
        }
    }
    return log;
}

const std::string& claudeCodeLogBytes() {
    static const std::string log = claudeCodeLog();
    return log;
}

const std::string& codexLogBytes() {
    static const std::string log = codexLog();
    return log;
}

void ClaudeCodeParseFile(benchmark::State& state) {
    const std::string& log = claudeCodeLogBytes();
    ClaudeCodeReader reader;
    std::vector<UsageEvent> events;
    for (auto _ : state) {
        events.clear();
        reader.parseFile(log, events);
        benchmark::DoNotOptimize(events.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * log.size()));
    state.counters["events"] = static_cast<double>(events.size());
}
BENCHMARK(ClaudeCodeParseFile)->Unit(benchmark::kMillisecond);

void CodexParseFile(benchmark::State& state) {
    const std::string& log = codexLogBytes();
    CodexReader reader;
    CodexFileState file;
    for (auto _ : state) {
        file = CodexFileState{};
        reader.parseFile(log, file);
        benchmark::DoNotOptimize(file.events.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * log.size()));
    state.counters["events"] = static_cast<double>(file.events.size());
}
BENCHMARK(CodexParseFile)->Unit(benchmark::kMillisecond);

// The floor: finding the line feeds alone.
void LineSplitting(benchmark::State& state) {
    const std::string& log = claudeCodeLogBytes();
    for (auto _ : state) {
        size_t lines = 0;
        forEachLine(log, [&](std::string_view) { ++lines; });
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * log.size()));
}
BENCHMARK(LineSplitting)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallowen
