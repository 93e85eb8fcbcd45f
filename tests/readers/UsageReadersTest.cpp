#include "readers/UsageReaders.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unistd.h>

namespace tallowen {
namespace {

// A home of Claude Code and Codex logs of many sizes, whose lines are padded at random so
// that they fall across the edges of small windows, some longer than three of them.
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
    int claudeCodeRequests = 0;
    for (int file = 0; file < 24; ++file) {
        std::string log;
        for (int line = std::stoi(number(0, 40)); line > 0; --line) {
            if (number(0, 2) == "0") {
                log += R"({"type":"user","message":{"content":")" + padding(12000) + "\"}}\n";
                continue;
            }
            ++claudeCodeRequests;
            log += R"({"type":"assistant","timestamp":")" + timestamp() + R"(","message":{"model":"claude-)" +
                   (number(0, 1) == "1" ? "sonnet-4-5" : "opus-4-1") + R"(","usage":{"input_tokens":)" +
                   number(0, 5000) + R"(,"cache_read_input_tokens":)" + number(0, 90000) + R"(,"output_tokens":)" +
                   number(0, 900) + R"(}},"pad":")" + padding(6000) + "\"}\n";
        }
        home.write(".claude/projects/p" + std::to_string(file % 3) + "/s" + std::to_string(file) + ".jsonl", log);
    }
    for (int file = 0; file < 8; ++file) {
        std::string log;
        for (int line = std::stoi(number(0, 30)); line > 0; --line) {
            if (number(0, 3) == "0")
                log += R"({"type":"event_msg","payload":{"type":"thread_settings_applied",)"
                       R"("thread_settings":{"model":")" +
                       std::string(number(0, 1) == "1" ? "gpt-5" : "o3-mini") + "\"}}}\n";
            else
                log += R"({"timestamp":")" + timestamp() + R"(","type":"event_msg","payload":{"type":"token_count",)"
                       R"("info":{"last_token_usage":{"input_tokens":)" + number(0, 90000) +
                       R"(,"cached_input_tokens":)" + number(0, 50000) + R"(,"output_tokens":)" + number(0, 3000) +
                       R"(}},"rate_limits":{"primary":{"used_percent":)" + number(0, 100) + R"(}},"pad":")" +
                       padding(5000) + "\"}}\n";
        }
        home.write(std::string(".codex/") + (file % 2 ? "sessions/2025/03/14/" : "archived_sessions/") + "rollout-" +
                       std::to_string(file) + ".jsonl",
                   log);
    }

    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    std::optional<CursorDayCache> noCursor;
    FileEntries oneThreadFiles;
    const LogReadOutcome oneThread =
        readAllLogs(home.path(), oneThreadFiles, noCursor, LocalCalendar{}, {.workerThreads = 1, .windowBytes = page});
    ASSERT_EQ(oneThread.detected, (std::vector<UsageTool>{UsageTool::claudeCode, UsageTool::codex}));
    EXPECT_EQ(oneThread.counters.filesRead, 32);
    int64_t requests = 0;
    for (const auto& [key, day] : oneThread.results.at(UsageTool::claudeCode)) requests += day.requests;
    EXPECT_EQ(requests, claudeCodeRequests);
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
