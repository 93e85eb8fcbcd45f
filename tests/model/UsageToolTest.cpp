#include "model/UsageTool.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

// The raw values are what the store and the synchronised records hold.
TEST(UsageToolTest, RawValuesRoundTripInOrderAndUnknownTextsGiveNothing) {
    const char* expectedRaw[] = {"claude-code", "codex",         "cursor",           "mac-chatgpt",
                                 "mac-claude",  "mac-perplexity", "phone-screentime", "phone-chatgpt",
                                 "phone-claude", "phone-gemini",  "phone-perplexity", "phone-other"};
    for (size_t i = 0; i < allUsageTools.size(); ++i) {
        EXPECT_EQ(rawValue(allUsageTools[i]), expectedRaw[i]);
        EXPECT_EQ(usageToolFromRawValue(expectedRaw[i]), allUsageTools[i]);
    }
    for (const char* unknown : {"Claude-Code", "", "phone-newtool"}) EXPECT_FALSE(usageToolFromRawValue(unknown));
    EXPECT_EQ(std::count_if(allUsageTools.begin(), allUsageTools.end(), isComputerSide), 6);
}

TEST(UsageToolTest, ToolsSharingALabelSortAsEqual) {
    EXPECT_EQ(displayLabel(UsageTool::macChatGPT), displayLabel(UsageTool::phoneChatGPT));
    EXPECT_FALSE(displayLabelLess(UsageTool::macClaude, UsageTool::phoneClaude));
    EXPECT_FALSE(displayLabelLess(UsageTool::phoneClaude, UsageTool::macClaude));
    EXPECT_TRUE(displayLabelLess(UsageTool::phoneScreenTime, UsageTool::macChatGPT));  // "APPS IA" < "CHATGPT"
}

}  // namespace
}  // namespace tallowen
