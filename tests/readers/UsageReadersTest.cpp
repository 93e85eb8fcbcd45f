#include "readers/UsageReaders.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unistd.h>

namespace tallowen {
namespace {

// A home of Claude Code and Codex logs of many sizes, whose usage lines are
// padded at random so that they fall across the edges of small windows.
class GeneratedHome {
public:
    explicit GeneratedHome(unsigned seed) : random_(seed) {
        for (int file = 0; file < 24; ++file) {
            std::string log;
            const int lines = number(0, 40);
            for (int line = 0; line < lines; ++line) {
                if (number(0, 2) == 0) {
                    log += R"({"type":"user","message":{"content":")" + padding(12000) + "\"}}\n";
                    continue;
                }
                ++claudeCodeRequests_;
                log += R"({"type":"assistant","timestamp":")" + timestamp() + R"(","message":{"model":")" +
                       (number(0, 1) ? "claude-sonnet-4-5" : "claude-opus-4-1") + R"(","usage":{"input_tokens":)" +
                       std::to_string(number(0, 5000)) + R"(,"cache_read_input_tokens":)" +
                       std::to_string(number(0, 90000)) + R"(,"output_tokens":)" + std::to_string(number(0, 900)) +
                       R"(}},"pad":")" + padding(6000) + "\"}\n";
            }
            home_.write(".claude/projects/p" + std::to_string(file % 3) + "/s" + std::to_string(file) + ".jsonl", log);
        }
        for (int file = 0; file < 8; ++file) {
            std::string log;
            for (int line = 0; line < number(0, 30); ++line) {
                if (number(0, 3) == 0) {
                    log += R"({"type":"event_msg","payload":{"type":"thread_settings_applied","thread_settings":)"
                           R"({"model":")" + std::string(number(0, 1) ? "gpt-5" : "o3-mini") + "\"}}}\n";
                    continue;
                }
                log += R"({"timestamp":")" + timestamp() + R"(","type":"event_msg","payload":{"type":"token_count",)"
                       R"("info":{"last_token_usage":{"input_tokens":)" + std::to_string(number(0, 90000)) +
                       R"(,"cached_input_tokens":)" + std::to_string(number(0, 50000)) + R"(,"output_tokens":)" +
                       std::to_string(number(0, 3000)) + R"(}},"rate_limits":{"primary":{"used_percent":)" +
                       std::to_string(number(0, 100)) + R"(}},"pad":")" + padding(5000) + "\"}}\n";
            }
            home_.write(std::string(".codex/") + (file % 2 ? "sessions/2025/03/14/" : "archived_sessions/") +
                            "rollout-" + std::to_string(file) + ".jsonl",
                        log);
        }
    }

    const std::filesystem::path& path() const { return home_.path(); }
    int claudeCodeRequests() const { return claudeCodeRequests_; }

private:
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    std::string padding(int most) { return std::string(static_cast<size_t>(number(0, most)), 'x'); }
    std::string timestamp() {
        char text[32];
        std::snprintf(text, sizeof text, "2025-03-%02dT%02d:%02d:%02d.%03dZ", number(10, 16), number(0, 23),
                      number(0, 59), number(0, 59), number(0, 999));
        return text;
    }

    std::mt19937 random_;
    testing::TempDir home_;
    int claudeCodeRequests_ = 0;
};

TEST(UsageReadersTest, ResultsAreTheSameWhateverTheThreadsAndWindows) {
    const testing::ScopedTimeZone zone("America/New_York");
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const GeneratedHome home(20250314);
    FileEntries oneThreadFiles;
    std::optional<CursorDayCache> noCursor;
    const LogReadOutcome oneThread = readAllLogs(home.path(), oneThreadFiles, noCursor, LocalCalendar{},
                                                 {.workerThreads = 1, .windowBytes = page});
    ASSERT_EQ(oneThread.detected, (std::vector<UsageTool>{UsageTool::claudeCode, UsageTool::codex}));
    EXPECT_EQ(oneThread.counters.filesRead, 32);
    int64_t requests = 0;
    for (const auto& [key, day] : oneThread.results.at(UsageTool::claudeCode)) requests += day.requests;
    EXPECT_EQ(requests, home.claudeCodeRequests());

    const ScanSettings others[] = {{.workerThreads = 2, .windowBytes = page},
                                   {.workerThreads = 2},
                                   {.workerThreads = 2, .windowBytes = 3 * page},
                                   {.workerThreads = 3, .windowBytes = page}};
    for (const ScanSettings& settings : others) {
        SCOPED_TRACE(::testing::Message() << settings.workerThreads << " threads, window " << settings.windowBytes);
        FileEntries files;
        const LogReadOutcome outcome = readAllLogs(home.path(), files, noCursor, LocalCalendar{}, settings);
        EXPECT_EQ(outcome.results, oneThread.results);
        EXPECT_EQ(outcome.counters.filesRead, 32);
        EXPECT_EQ(files, oneThreadFiles);
    }
}

}  // namespace
}  // namespace tallowen
