#include "IcuLocaleFormatter.hpp"
#include "ui/CountingText.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

#define NNBSP "\u202f"

CountingText counter(int64_t value, double rate, const IcuLocaleFormatter& locale) {
    return CountingText{value, [locale](int64_t n) { return tokenText(n, locale); }, rate};
}

TEST(CountingTextTest, StoppedCounterFormatsTheRoundedAnchorOncePerMinute) {
    const IcuLocaleFormatter english("en_US");
    const CountingText text = counter(2500000, 0, english);
    CountingAnchor anchor;
    anchor.appear(text.value, Date{1000});
    EXPECT_EQ(text.step(), 1000);
    EXPECT_EQ(text.tickIntervalSeconds(), 60);
    EXPECT_EQ(text.textAt(anchor, Date{5000}, english), "2.5 M");
    anchor.value = 1234.5;
    EXPECT_EQ(text.shownValueAt(anchor, Date{9999}), 1235);
}

TEST(CountingTextTest, SlowCounterCountsEveryTokenWithGrouping) {
    const IcuLocaleFormatter english("en_US");
    const IcuLocaleFormatter french("fr_FR");
    const CountingText text = counter(1200, 5, english);
    CountingAnchor anchor;
    anchor.appear(text.value, Date{1000});
    EXPECT_EQ(text.step(), 1);
    EXPECT_DOUBLE_EQ(text.tickIntervalSeconds(), 0.2);
    EXPECT_EQ(text.textAt(anchor, Date{1000}, english), "1,200");
    EXPECT_EQ(text.textAt(anchor, Date{1000.3}, english), "1,201");
    EXPECT_EQ(text.textAt(anchor, Date{1010}, french), "1" NNBSP "250");
    // Before the anchor the counter does not run backwards.
    EXPECT_EQ(text.textAt(anchor, Date{900}, english), "1,200");
}

TEST(CountingTextTest, FastCounterAboveAMillionStepsByThousands) {
    const IcuLocaleFormatter english("en_US");
    const CountingText text = counter(2400000, 250, english);
    CountingAnchor anchor;
    anchor.appear(text.value, Date{0});
    EXPECT_EQ(text.step(), 1000);
    EXPECT_DOUBLE_EQ(text.tickIntervalSeconds(), 4);
    EXPECT_DOUBLE_EQ(text.transitionSeconds(), 0.28);
    EXPECT_EQ(text.textAt(anchor, Date{0}, english), "2.400 M");
    EXPECT_EQ(text.textAt(anchor, Date{3.9}, english), "2.400 M");
    EXPECT_EQ(text.textAt(anchor, Date{4}, english), "2.401 M");
    EXPECT_EQ(text.textAt(anchor, Date{0}, IcuLocaleFormatter("fr_FR")), "2,400 M");
}

TEST(CountingTextTest, StepsAndTheirTexts) {
    const IcuLocaleFormatter english("en_US");
    struct Case {
        int64_t value;
        double rate;
        int64_t step;
    } cases[] = {
        {10, 0.5, 1}, {10, 1, 1}, {10, 9.9, 1}, {10, 10, 10}, {10, 150, 100}, {10, 4000, 1000},
        {2000000, 0.5, 1000}, {2000000, 15000, 10000}, {2000000, 200000, 100000},
    };
    for (const Case& c : cases) EXPECT_EQ(counter(c.value, c.rate, english).step(), c.step) << c.rate;

    EXPECT_EQ(countingStepText(2345678, 1000, english), "2.346 M");
    EXPECT_EQ(countingStepText(2345678, 10000, english), "2.35 M");
    EXPECT_EQ(countingStepText(2345678, 100000, english), "2.3 M");
    EXPECT_EQ(countingStepText(12345, 10, english), "12,345");
    EXPECT_EQ(countingStepText(12345, 100, english), "12.3 k");
    EXPECT_EQ(countingStepText(12345, 1000, english), "12 k");
    EXPECT_EQ(countingStepText(12300, 100, IcuLocaleFormatter("fr_FR")), "12,3 k");
}

TEST(CountingTextTest, RenderingSplitsTheUnitButNeverDigitGroups) {
    const auto parts = splitForRendering("2,400 M");
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->number, "2,400");
    EXPECT_EQ(parts->unit, "M");
    const auto grouped = splitForRendering("1" NNBSP "234 k");
    ASSERT_TRUE(grouped);
    EXPECT_EQ(grouped->number, "1" NNBSP "234");
    EXPECT_EQ(grouped->unit, "k");
    EXPECT_FALSE(splitForRendering("1" NNBSP "234"));
    EXPECT_FALSE(splitForRendering("1 234"));
    EXPECT_FALSE(splitForRendering("999"));
}

}  // namespace
}  // namespace tallowen
