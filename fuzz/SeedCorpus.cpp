// Writes a seed corpus for every fuzz target into the folder given: small
// generated logs shaped like real ones, state and activation files the engine
// itself wrote, timestamps and day keys. Files already there are kept.

#include "activity/ActivationStamps.hpp"
#include "import/ImportStateCodec.hpp"
#include "readers/LineSplitter.hpp"

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using tallowen::Date;

std::mt19937 random(2025);

size_t pick(size_t low, size_t high) { return std::uniform_int_distribution<size_t>(low, high)(random); }

std::string timestamp() {
    char text[40];
    std::snprintf(text, sizeof text, "2025-03-%02zuT%02zu:%02zu:%02zu%s", pick(1, 31), pick(0, 23), pick(0, 59),
                  pick(0, 59), pick(0, 1) ? ".123Z" : "+01:00");
    return text;
}

std::string words(size_t count) {
    static const char* const pieces[] = {"let", "x", "\\n", "\\\"q\\\"", "é", "😀", "\\u00e9", "{", "]", "usage"};
    std::string out;
    for (size_t i = 0; i < count; ++i) out += std::string(pieces[pick(0, 9)]) + " ";
    return out;
}

std::string claudeCodeLog() {
    std::string log;
    for (size_t line = pick(3, 12); line > 0; --line) {
        if (pick(0, 2) == 0) {
            log += R"({"type":"user","timestamp":")" + timestamp() + R"(","message":{"role":"user","content":")" +
                   words(pick(1, 30)) + "\"}}\n";
            continue;
        }
        log += R"({"parentUuid":"p","type":"assistant","timestamp":")" + timestamp() +
               R"(","message":{"model":")" + (pick(0, 1) ? "claude-sonnet-4-5" : "claude-opus-4-1") +
               R"(","content":[{"type":"text","text":")" + words(pick(1, 20)) + R"("}],"usage":{"input_tokens":)" +
               std::to_string(pick(0, 5000)) + R"(,"cache_creation_input_tokens":)" + std::to_string(pick(0, 900)) +
               R"(,"cache_read_input_tokens":)" + std::to_string(pick(0, 90000)) + R"(,"output_tokens":)" +
               std::to_string(pick(0, 3000)) + "}}}\n";
    }
    return log;
}

std::string codexLog() {
    std::string log = R"({"timestamp":")" + timestamp() +
                      R"(","type":"event_msg","payload":{"type":"thread_settings_applied","thread_settings":{"model":"gpt-5"}}})"
                      "\n";
    for (size_t line = pick(2, 10); line > 0; --line) {
        if (pick(0, 2) == 0) {
            log += R"({"timestamp":")" + timestamp() +
                   R"(","type":"response_item","payload":{"type":"function_call_output","output":")" +
                   words(pick(1, 30)) + "\"}}\n";
            continue;
        }
        log += R"({"timestamp":")" + timestamp() +
               R"(","type":"event_msg","payload":{"type":"token_count","info":{"last_token_usage":{"input_tokens":)" +
               std::to_string(pick(0, 90000)) + R"(,"cached_input_tokens":)" + std::to_string(pick(0, 9000)) +
               R"(,"output_tokens":)" + std::to_string(pick(0, 3000)) +
               R"(}},"rate_limits":{"primary":{"used_percent":12.5,"resets_at":1741960800},)"
               R"("secondary":{"used_percent":40,"resets_at":1742400000.0},"plan_type":"pro"}}})"
               "\n";
    }
    return log;
}

tallowen::ImportState importState() {
    tallowen::ImportState state;
    tallowen::FileEntry entry{123456, Date{763635600.123456789}, {}};
    tallowen::DayUsage day;
    day.sessions = {"rollout-x#0", "rollout-x#1"};
    day.requests = 3;
    day.inputTokens = 15000;
    day.outputTokens = 700;
    day.episodeHours = {9, 14};
    day.costCents = 12;
    day.waterMilliliters = 80;
    day.quota = tallowen::QuotaSnapshot{Date{763635700.5}, 12.5, Date{763700000}, 40.0, {}, "pro"};
    entry.days["2025-03-14"] = day;
    state.files["/home/u/.codex/sessions/rollout-x.jsonl"] = entry;
    return state;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", argv[0]);
        return 2;
    }
    const std::filesystem::path root = argv[1];
    const auto write = [&](const char* check, int index, const std::string& bytes) {
        const auto folder = root / check;
        std::filesystem::create_directories(folder);
        const auto file = folder / ("seed-" + std::to_string(index));
        if (std::filesystem::exists(file)) return;
        std::ofstream(file, std::ios::binary) << bytes;
    };
    int lines = 0;
    for (int i = 0; i < 8; ++i) {
        const std::string claude = claudeCodeLog();
        const std::string codex = codexLog();
        write("claudeCodeFile", i, claude);
        write("codexFile", i, codex);
        tallowen::forEachLine(claude + codex, [&](std::string_view line) {
            if (lines < 40) write("lineJson", lines++, std::string(line));
        });
        write("iso8601Text", i, timestamp());
    }
    // Sums the product stops on: the harness counts these stops instead of crashing.
    write("claudeCodeFile", 100,
          R"({"type":"assistant","timestamp":"2025-03-14T09:00:00Z","message":{"usage":{"input_tokens":)"
          R"(9223372036854775807,"cache_creation_input_tokens":1}}})");
    write("codexFile", 100,
          R"({"timestamp":"2025-03-14T09:00:00Z","payload":{"type":"token_count","info":{"last_token_usage":)"
          R"({"input_tokens":9223372036854775807,"output_tokens":9223372036854775807}}}})");
    write("importStateText", 0, tallowen::encodeImportState(importState()));
    write("importStateText", 1, tallowen::encodeImportState({}));
    write("activationsText", 0,
          tallowen::encodeActivationStamps({{"com.openai.chat", {Date{763635600.25}, Date{763639200}}},
                                            {"ai.perplexity.mac", {}}}));
    const char* keys[] = {"2025-03-14", "2024-02-29", "2025-03-30", "2025-10-26", "1970-01-01", "9999-12-31"};
    for (int i = 0; i < 6; ++i) write("dayKeyText", i, keys[i]);
    return 0;
}
