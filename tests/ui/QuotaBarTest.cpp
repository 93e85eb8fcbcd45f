#include "IcuLocaleFormatter.hpp"
#include "support/SampleBuilder.hpp"
#include "ui/QuotaBar.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using testing::SampleBuilder;

const IcuLocaleFormatter english("en_US");

TEST(QuotaBarTest, BlocksOfEveryKnownToolWithAQuotaOfTheLastWeekInToolOrder) {
    const Date now{800000000};
    UsageSample phone = SampleBuilder("2026-03-01", "phone-claude").primaryQuota(5).secondaryQuota(20).updatedAt(now);
    phone.quotaPlan = "pro \u00e9t\u00e9";
    const std::vector<MacQuotaBlock> blocks = chooseQuotaBlocks(
        {phone, SampleBuilder("2026-03-01", "claude-code").secondaryQuota(1).updatedAt(now.addingSeconds(-691200)),
         SampleBuilder("2026-03-01", "cursor").primaryQuota(1).updatedAt(now.addingSeconds(-691201)),
         SampleBuilder("2026-03-01", "mystery").primaryQuota(1).updatedAt(now)},
        now);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].tool, UsageTool::claudeCode);
    EXPECT_FALSE(quotaBlockHeader(blocks[0], english).plan);
    EXPECT_EQ(quotaBars(blocks[0].sample).front().title, "7J");
    EXPECT_EQ(quotaBlockHeader(blocks[1], english).label + " " + *quotaBlockHeader(blocks[1], english).plan,
              "CLAUDE PRO \u00c9T\u00c9");
    EXPECT_EQ(quotaBars(blocks[1].sample).front().title + quotaBars(blocks[1].sample).back().title, "5H7J");
    phone.quotaPlan = "";
    EXPECT_FALSE(quotaBlockHeader({UsageTool::phoneClaude, phone}, english).plan);
}

TEST(QuotaBarTest, PercentIsClampedForTheBarAndTextButNotForTheColour) {
    const struct {
        double percent, fill;
        const char* text;
        QuotaColorRole color;
    } cases[] = {
        {79.6, 0.796, "80 %", QuotaColorRole::primary}, {80, 0.8, "80 %", QuotaColorRole::warning},
        {130, 1, "100 %", QuotaColorRole::warning},     {-5, 0, "0 %", QuotaColorRole::primary},
        {0.5, 0.005, "1 %", QuotaColorRole::primary},
        {std::numeric_limits<double>::quiet_NaN(), 0, "0 %", QuotaColorRole::primary},
    };
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(quotaBarFillFraction(c.percent), c.fill) << c.percent;
        EXPECT_EQ(quotaPercentText(c.percent), c.text) << c.percent;
        EXPECT_EQ(quotaColorRole(c.percent), c.color) << c.percent;
    }
}

TEST(QuotaBarTest, ResetLabelSwitchesToDaysAtTwoDays) {
    const Date now{1000000};
    const struct {
        std::optional<double> secondsLeft;
        std::optional<std::string> label;
    } cases[] = {
        {std::nullopt, std::nullopt}, {0, std::nullopt}, {30, "0 min"},   {59 * 60 + 59, "59 min"},
        {60 * 60, "1 h"},             {2879 * 60 + 59, "47 h"}, {2880 * 60, "2 j"}, {1.0e300, "6250000000000000 j"},
    };
    for (const auto& c : cases) {
        const auto resetAt = c.secondsLeft ? std::optional<Date>(now.addingSeconds(*c.secondsLeft)) : std::nullopt;
        EXPECT_EQ(quotaResetLabel(resetAt, now), c.label) << c.secondsLeft.value_or(-1);
        EXPECT_EQ(quotaResetText(resetAt, now), c.label ? std::optional<std::string>("reset " + *c.label) : std::nullopt);
    }
}

}  // namespace
}  // namespace tallowen
