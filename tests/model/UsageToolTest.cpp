#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

TEST(UsageToolTest, RawValuesRoundTripInOrderAndUnknownTextsGiveNothing) {
    const char* expectedRaw[] = {"claude-code",      "codex",         "cursor",       "mac-chatgpt",
                                 "mac-claude",       "mac-perplexity", "phone-screentime", "phone-chatgpt",
                                 "phone-claude",     "phone-gemini",  "phone-perplexity", "phone-other"};
    for (size_t i = 0; i < allUsageTools.size(); ++i) {
        EXPECT_EQ(rawValue(allUsageTools[i]), expectedRaw[i]);
        EXPECT_EQ(usageToolFromRawValue(expectedRaw[i]), allUsageTools[i]);
    }
    EXPECT_FALSE(usageToolFromRawValue("Claude-Code"));
    EXPECT_FALSE(usageToolFromRawValue(""));
    EXPECT_FALSE(usageToolFromRawValue("phone-newtool"));
}

TEST(UsageToolTest, LabelsAreSharedAndSortAsEqual) {
    EXPECT_EQ(displayLabel(UsageTool::phoneScreenTime), "APPS IA");
    EXPECT_EQ(displayLabel(UsageTool::phoneOther), "RACCOURCIS");
    EXPECT_EQ(displayLabel(UsageTool::claudeCode), "CLAUDE CODE");
    EXPECT_EQ(displayLabel(UsageTool::macChatGPT), displayLabel(UsageTool::phoneChatGPT));
    EXPECT_FALSE(displayLabelLess(UsageTool::macClaude, UsageTool::phoneClaude));
    EXPECT_FALSE(displayLabelLess(UsageTool::phoneClaude, UsageTool::macClaude));
    EXPECT_TRUE(displayLabelLess(UsageTool::phoneScreenTime, UsageTool::macChatGPT));
    EXPECT_EQ(std::count_if(allUsageTools.begin(), allUsageTools.end(), isComputerSide), 6);
}

TEST(UsageToolTest, NewSampleHasEveryDefault) {
    const UsageSample sample = UsageSample::created(Date{1234.5});
    EXPECT_EQ(sample.dayKey, "");
    EXPECT_EQ(sample.tool, "");
    EXPECT_EQ(sample.sessions + sample.requests + sample.inputTokens + sample.outputTokens, 0);
    EXPECT_EQ(sample.estimatedCostCents + sample.estimatedWaterMilliliters, 0);
    EXPECT_TRUE(sample.episodeHours.empty());
    EXPECT_FALSE(sample.hasQuota() || sample.quotaPrimaryResetAt || sample.quotaSecondaryResetAt || sample.quotaPlan);
    EXPECT_EQ(sample.updatedAt, Date{1234.5});
}

}  // namespace
}  // namespace tallowen
