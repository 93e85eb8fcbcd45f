#include "model/UsageTool.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

TEST(UsageToolTest, RawValuesRoundTripAndUnknownTextsGiveNothing) {
    for (const UsageTool tool : allUsageTools) EXPECT_EQ(usageToolFromRawValue(rawValue(tool)), tool);
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
