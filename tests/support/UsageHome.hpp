#pragma once

#include "support/CursorDatabase.hpp"
#include "support/TempDir.hpp"

#include <filesystem>
#include <string>

namespace tallowen::testing {

// A home folder holding logs of the three tools over two days of March 2025
// (Paris time), written under `relative` in `scratch`.
inline void writeUsageHome(const TempDir& scratch, const std::filesystem::path& relative) {
    scratch.write(relative / ".claude/projects/-home-dev-app/first.jsonl",
                  R"({"type":"user","timestamp":"2025-03-14T08:59:00Z","message":{"content":"hi"}})"
                  "\n"
                  R"({"type":"assistant","timestamp":"2025-03-14T09:00:00Z","message":{"model":"claude-sonnet-4-5",)"
                  R"("usage":{"input_tokens":1200,"cache_creation_input_tokens":300,"cache_read_input_tokens":9000,)"
                  R"("output_tokens":800}}})"
                  "\n"
                  R"({"type":"assistant","timestamp":"2025-03-14T22:45:00.125Z","message":{"model":"claude-opus-4-1",)"
                  R"("usage":{"input_tokens":50,"output_tokens":2500}}})"
                  "\n"
                  R"({"type":"assistant","timestamp":"2025-03-15T07:10:00Z","message":{"usage":{"input_tokens":10}}})");
    scratch.write(relative / ".claude/projects/-home-dev-lib/second.jsonl",
                  R"({"type":"assistant","timestamp":"2025-03-14T09:30:00Z","message":{"model":"claude-haiku-4-5",)"
                  R"("usage":{"input_tokens":400,"output_tokens":90}}})"
                  "\n");
    scratch.write(relative / ".codex/sessions/2025/03/14/rollout-x.jsonl",
                  R"({"timestamp":"2025-03-14T10:00:00Z","type":"event_msg",)"
                  R"("payload":{"type":"thread_settings_applied",)"
                  R"("thread_settings":{"model":"gpt-5"}}})"
                  "\n"
                  R"({"timestamp":"2025-03-14T10:05:00Z","type":"event_msg","payload":{"type":"token_count","info":)"
                  R"({"last_token_usage":{"input_tokens":5000,"cached_input_tokens":3000,"output_tokens":700}},)"
                  R"("rate_limits":{"primary":{"used_percent":12.5,"resets_at":1741960800},"plan_type":"pro"}}})"
                  "\n");
    scratch.write(relative / ".codex/archived_sessions/rollout-y.jsonl",
                  R"({"timestamp":"2025-03-15T11:00:00Z","type":"event_msg","payload":{"type":"token_count","info":)"
                  R"({"last_token_usage":{"input_tokens":800,"output_tokens":200}}}})"
                  "\n");
    writeCursorDatabase(
        scratch.path() / relative / "Library/Application Support/Cursor/User/globalStorage/state.vscdb",
        {{"composerData:" + std::string(36, 'd'), cursorCreatedAt(1741950000000)},
         {"bubbleId:" + std::string(36, 'd') + ":1", cursorTokenCount(3000, 400)}});
}

}  // namespace tallowen::testing
