#include "IcuLocaleFormatter.hpp"
#include "ui/CountingText.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

#define NNBSP "\u202f"

const IcuLocaleFormatter english("en_US");
const IcuLocaleFormatter french("fr_FR");

CountingText counter(int64_t value, double rate) {
    return CountingText{value, [](int64_t n) { return tokenText(n, english); }, rate};
}

TEST(CountingTextTest, RunsFromItsAnchorAtTheStepsPaceAndNeverBackwards) {
    const struct {
        int64_t value;
        double rate, secondsAfterAnchor;
        const IcuLocaleFormatter& locale;
        const char* text;
        double tickSeconds;
    } cases[] = {
        {2500000, 0, 4000, english, "2.5 M", 60},  // a stopped counter shows the rounded figure
        {1200, 5, 0.3, english, "1,201", 0.2},
        {1200, 5, 10, french, "1" NNBSP "250", 0.2},
        {1200, 5, -100, english, "1,200", 0.2},
        {2400000, 250, 3.9, english, "2.400 M", 4},
        {2400000, 250, 4, english, "2.401 M", 4},
        {2400000, 250, 0, french, "2,400 M", 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const CountingText text = counter(c.value, c.rate);
        CountingAnchor anchor;
        anchor.appear(text.value, Date{1000});
        EXPECT_EQ(text.textAt(anchor, Date{1000 + c.secondsAfterAnchor}, c.locale), c.text);
        EXPECT_DOUBLE_EQ(text.tickIntervalSeconds(), c.tickSeconds);
    }
    EXPECT_DOUBLE_EQ(counter(2400000, 250).transitionSeconds(), 0.28);
    CountingAnchor anchor;
    anchor.value = 1234.5;
    EXPECT_EQ(counter(2500000, 0).shownValueAt(anchor, Date{9999}), 1235);
}

TEST(CountingTextTest, StepsAndTheirTexts) {
    const struct {
        int64_t value;
        double rate;
        int64_t step;
    } steps[] = {
        {2500000, 0, 1000}, {10, 0.5, 1}, {10, 9.9, 1}, {10, 10, 10}, {10, 150, 100}, {10, 4000, 1000},
        {2000000, 0.5, 1000}, {2000000, 15000, 10000}, {2000000, 200000, 100000},
    };
    for (const auto& c : steps) EXPECT_EQ(counter(c.value, c.rate).step(), c.step) << c.value << " " << c.rate;

    const struct {
        int64_t value, step;
        const char* text;
    } texts[] = {
        {2345678, 1000, "2.346 M"}, {2345678, 10000, "2.35 M"}, {2345678, 100000, "2.3 M"},
        {12345, 10, "12,345"},      {12345, 100, "12.3 k"},     {12345, 1000, "12 k"},
    };
    for (const auto& c : texts) EXPECT_EQ(countingStepText(c.value, c.step, english), c.text);
    EXPECT_EQ(countingStepText(12300, 100, french), "12,3 k");
}

TEST(CountingTextTest, RenderingSplitsTheUnitButNeverDigitGroups) {
    const auto grouped = splitForRendering("1" NNBSP "234 k");
    ASSERT_TRUE(grouped);
    EXPECT_EQ(grouped->number + "|" + grouped->unit, "1" NNBSP "234|k");
    for (const char* unsplit : {"1" NNBSP "234", "1 234", "999"}) EXPECT_FALSE(splitForRendering(unsplit)) << unsplit;
}

}  // namespace
}  // namespace tallowen
