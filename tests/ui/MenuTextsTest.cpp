#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/CountingText.hpp"
#include "ui/ImportProgressLine.hpp"
#include "ui/MenuFormats.hpp"
#include "ui/QuotaBar.hpp"
#include "ui/StatusLine.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using testing::SampleBuilder;

#define NNBSP "\u202f"
#define NBSP "\u00a0"

const IcuLocaleFormatter french("fr_FR");
const IcuLocaleFormatter english("en_US");

TEST(MenuFormatsTest, TokensInBothLocales) {
    const std::tuple<int64_t, const char*, const char*> cases[] = {
        {0, "0", "0"},           {999, "999", "999"},         {1000, "1 k", "1 k"}, {999999, "999 k", "999 k"},
        {1000000, "1,0 M", "1.0 M"}, {12345678901, "12345,7 M", "12345.7 M"},
    };
    for (const auto& [n, inFrench, inEnglish] : cases)
        EXPECT_EQ(tokenText(n, french) + "|" + tokenText(n, english), std::string(inFrench) + "|" + inEnglish);
}

TEST(MenuFormatsTest, MoneyIsUnknownBelowOneCentAndRoundedFromTenDollars) {
    const std::tuple<int64_t, const char*, const char*> cases[] = {
        {-5, "?", "?"},  {0, "?", "?"}, {1, "0,01" NBSP "$US", "$0.01"}, {999, "9,99" NBSP "$US", "$9.99"},
        {1049, "10" NBSP "$US", "$10"}, {123456, "1" NNBSP "235" NBSP "$US", "$1,235"},
    };
    for (const auto& [cents, inFrench, inEnglish] : cases)
        EXPECT_EQ(moneyText(cents, french) + "|" + moneyText(cents, english), std::string(inFrench) + "|" + inEnglish);
}

TEST(MenuFormatsTest, LitresWithADecimalBelowOneLitreAndRequestsOnTwoDigits) {
    const std::pair<int64_t, const char*> litres[] = {{0, "0,0 L"}, {999, "1,0 L"}, {1000, "1 L"}, {2600, "3 L"}};
    for (const auto& [milliliters, text] : litres) EXPECT_EQ(litresText(milliliters, french), text);
    EXPECT_EQ(requestCountText(7) + " " + requestCountText(123), "07 123");
}

TEST(ImportProgressLineTest, ShownAfterHalfASecondOfReading) {
    const std::tuple<ImportProgressSnapshot, double, const char*> cases[] = {
        {{3, 1, 9000000, false}, 0.49, "none"},
        {{1286, 120, 312000000, false}, 0.5, "reading logs 120/1286 · 312 MB · 624 MB/s"},
    };
    for (const auto& [snapshot, seconds, line] : cases)
        EXPECT_EQ(importProgressLine(snapshot, seconds).value_or("none"), line);
}

CountingText counter(int64_t value, double rate) {
    return CountingText{value, [](int64_t n) { return tokenText(n, english); }, rate};
}

TEST(CountingTextTest, RunsFromItsAnchorAtTheStepsPaceAndNeverBackwards) {
    // Value, rate per second, seconds after the anchor, locale, text, seconds between ticks.
    const std::tuple<int64_t, double, double, const IcuLocaleFormatter&, const char*, double> cases[] = {
        {2500000, 0, 4000, english, "2.5 M", 60},  // a stopped counter shows the rounded figure
        {1200, 5, 0.3, english, "1,201", 0.2},        {1200, 5, 10, french, "1" NNBSP "250", 0.2},
        {1200, 5, -100, english, "1,200", 0.2},       {2400000, 250, 3.9, english, "2.400 M", 4},
        {2400000, 250, 4, english, "2.401 M", 4},     {2400000, 250, 0, french, "2,400 M", 4},
    };
    for (const auto& [value, rate, secondsAfterAnchor, locale, text, tickSeconds] : cases) {
        SCOPED_TRACE(text);
        const CountingText counting = counter(value, rate);
        CountingAnchor anchor;
        anchor.appear(counting.value, Date{1000});
        EXPECT_EQ(counting.textAt(anchor, Date{1000 + secondsAfterAnchor}, locale), text);
        EXPECT_DOUBLE_EQ(counting.tickIntervalSeconds(), tickSeconds);
    }
    EXPECT_DOUBLE_EQ(counter(2400000, 250).transitionSeconds(), 0.28);
    CountingAnchor anchor;
    anchor.value = 1234.5;
    EXPECT_EQ(counter(2500000, 0).shownValueAt(anchor, Date{9999}), 1235);
}

TEST(CountingTextTest, StepsAndTheirTexts) {
    const std::tuple<int64_t, double, int64_t> steps[] = {
        {2500000, 0, 1000}, {10, 0.5, 1}, {10, 9.9, 1}, {10, 10, 10}, {10, 150, 100}, {10, 4000, 1000},
        {2000000, 0.5, 1000}, {2000000, 15000, 10000}, {2000000, 200000, 100000},
    };
    for (const auto& [value, rate, step] : steps) EXPECT_EQ(counter(value, rate).step(), step) << value << " " << rate;
    const std::tuple<int64_t, int64_t, const char*> texts[] = {
        {2345678, 1000, "2.346 M"}, {2345678, 10000, "2.35 M"}, {2345678, 100000, "2.3 M"},
        {12345, 10, "12,345"},      {12345, 100, "12.3 k"},     {12345, 1000, "12 k"},
    };
    for (const auto& [value, step, text] : texts) EXPECT_EQ(countingStepText(value, step, english), text);
    EXPECT_EQ(countingStepText(12300, 100, french), "12,3 k");
}

TEST(CountingTextTest, RenderingSplitsTheUnitButNeverDigitGroups) {
    const auto grouped = splitForRendering("1" NNBSP "234 k");
    ASSERT_TRUE(grouped);
    EXPECT_EQ(grouped->number + "|" + grouped->unit, "1" NNBSP "234|k");
    for (const char* unsplit : {"1" NNBSP "234", "1 234", "999"}) EXPECT_FALSE(splitForRendering(unsplit)) << unsplit;
}

TEST(QuotaBarTest, BlocksOfEveryKnownToolWithAQuotaOfTheLastWeekInToolOrder) {
    const Date now{800000000};
    UsageSample phone = SampleBuilder("2026-03-01", "phone-claude").primaryQuota(5).updatedAt(now);
    phone.quotaPlan = "";
    const std::vector<MacQuotaBlock> blocks = chooseQuotaBlocks(
        {phone, SampleBuilder("2026-03-01", "claude-code").secondaryQuota(1).updatedAt(now.addingSeconds(-691200)),
         SampleBuilder("2026-03-01", "cursor").primaryQuota(1).updatedAt(now.addingSeconds(-691201)),
         SampleBuilder("2026-03-01", "mystery").primaryQuota(1).updatedAt(now)},
        now);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(std::pair(blocks[0].tool, blocks[1].tool), std::pair(UsageTool::claudeCode, UsageTool::phoneClaude));
    EXPECT_EQ(quotaBars(blocks[0].sample).front().title, "7J");  // a weekly window alone
    EXPECT_FALSE(quotaBlockHeader(blocks[1], english).plan);     // an empty plan shows none
}

TEST(QuotaBarTest, PercentIsClampedForTheBarAndTextButNotForTheColour) {
    const std::tuple<double, double, const char*, QuotaColorRole> cases[] = {
        {79.6, 0.796, "80 %", QuotaColorRole::primary}, {80, 0.8, "80 %", QuotaColorRole::warning},
        {130, 1, "100 %", QuotaColorRole::warning},     {-5, 0, "0 %", QuotaColorRole::primary},
        {0.5, 0.005, "1 %", QuotaColorRole::primary},
        {std::numeric_limits<double>::quiet_NaN(), 0, "0 %", QuotaColorRole::primary},
    };
    for (const auto& [percent, fill, text, color] : cases) {
        EXPECT_DOUBLE_EQ(quotaBarFillFraction(percent), fill) << percent;
        EXPECT_EQ(quotaPercentText(percent), text) << percent;
        EXPECT_EQ(quotaColorRole(percent), color) << percent;
    }
}

TEST(QuotaBarTest, ResetLabelSwitchesToDaysAtTwoDays) {
    const Date now{1000000};
    const std::pair<std::optional<double>, std::optional<std::string>> cases[] = {
        {std::nullopt, std::nullopt}, {0, std::nullopt}, {30, "0 min"},   {59 * 60 + 59, "59 min"},
        {60 * 60, "1 h"},             {2879 * 60 + 59, "47 h"}, {2880 * 60, "2 j"}, {1.0e300, "6250000000000000 j"},
    };
    for (const auto& [secondsLeft, label] : cases)
        EXPECT_EQ(quotaResetLabel(secondsLeft ? std::optional(now.addingSeconds(*secondsLeft)) : std::nullopt, now),
                  label) << secondsLeft.value_or(-1);
}

TEST(StatusLineTest, TodaysFiguresAndTheFullestFreshQuota) {
    testing::ScopedTimeZone paris("Europe/Paris");
    const Date now = testing::localDate(2025, 3, 14, 10);
    UsageSample codex = SampleBuilder("2025-03-14", "codex").requests(7).tokens(200000, 6090).water(400).cost(1234)
                            .primaryQuota(40).secondaryQuota(88).updatedAt(now);
    codex.quotaSecondaryResetAt = now.addingSeconds(3 * 3600 + 60);
    const std::vector<UsageSample> samples = {
        codex, SampleBuilder("2025-03-14", "codex").requests(1000).updatedAt(now.addingSeconds(-60)),  // written before
        SampleBuilder("2025-03-14", "phone-claude").tokens(4000).water(5000),  // counted, but no water
        SampleBuilder("2025-03-13", "claude-code").tokens(1).primaryQuota(87.9).updatedAt(now),
        SampleBuilder("2025-03-14", "cursor").secondaryQuota(88).updatedAt(now),  // as full, but later in order
        SampleBuilder("2025-03-01", "mac-chatgpt").primaryQuota(99).updatedAt(now.addingSeconds(-691201))};  // stale
    const StatusLineFigures figures = statusLineFigures(samples, now, LocalCalendar{});
    EXPECT_EQ(statusLineJson(figures, now, french),
              R"({"dayKey":"2025-03-14","requests":7,"tokens":210090,"waterMilliliters":400,"costCents":1234,)"
              R"("fullestQuota":{"tool":"codex","window":"7J","percent":88,"resetAt":"2025-03-14T12:01:00Z"},)"
              R"("text":"7 recours · 210 k tokens · 0,4 L · CODEX 7J 88 % reset 3 h"})");
    EXPECT_EQ(statusLineOldestQuotaUpdate(now), now.addingSeconds(-691200));
    const std::string none = statusLineJson(statusLineFigures({}, now, LocalCalendar{}), now, french);
    EXPECT_NE(none.find(R"("fullestQuota":null,"text":"0 recours · 0 tokens · 0,0 L")"), std::string::npos) << none;
}

}  // namespace
}  // namespace tallowen
