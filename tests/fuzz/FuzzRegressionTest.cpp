#include "../../fuzz/FuzzTargets.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace tallowen {
namespace {

// Inputs that once crashed a fuzz target, kept in tests/fuzz/regressions/<check>/
// and replayed through the same check: a broken promise traps the test.
TEST(FuzzRegressionTest, EveryInputThatOnceCrashedPassesItsCheck) {
    const std::map<std::string, void (*)(std::string_view)> checks = {
        {"claudeCodeFile", fuzz::claudeCodeFile},   {"codexFile", fuzz::codexFile},
        {"importStateText", fuzz::importStateText}, {"activationsText", fuzz::activationsText},
        {"iso8601Text", fuzz::iso8601Text},         {"dayKeyText", fuzz::dayKeyText},
        {"lineJson", fuzz::lineJson},
    };
    int replayed = 0;
    for (const auto& folder : std::filesystem::directory_iterator(TALLOWEN_FUZZ_REGRESSIONS)) {
        const auto check = checks.find(folder.path().filename().string());
        ASSERT_NE(check, checks.end()) << "no check named " << folder.path();
        for (const auto& file : std::filesystem::directory_iterator(folder.path())) {
            SCOPED_TRACE(file.path().string());
            std::ostringstream bytes;
            bytes << std::ifstream(file.path(), std::ios::binary).rdbuf();
            check->second(bytes.str());
            ++replayed;
        }
    }
    EXPECT_GT(replayed, 0);
}

}  // namespace
}  // namespace tallowen
