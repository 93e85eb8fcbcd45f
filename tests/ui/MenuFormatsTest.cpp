#include "IcuLocaleFormatter.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

#define NNBSP "\u202f"
#define NBSP "\u00a0"

const IcuLocaleFormatter french("fr_FR");
const IcuLocaleFormatter english("en_US");

TEST(MenuFormatsTest, TokensInBothLocales) {
    const struct {
        int64_t tokens;
        const char *french, *english;
    } cases[] = {
        {0, "0", "0"},           {999, "999", "999"},         {1000, "1 k", "1 k"}, {999999, "999 k", "999 k"},
        {1000000, "1,0 M", "1.0 M"}, {12345678901, "12345,7 M", "12345.7 M"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tokenText(c.tokens, french), c.french) << c.tokens;
        EXPECT_EQ(tokenText(c.tokens, english), c.english) << c.tokens;
    }
}

TEST(MenuFormatsTest, MoneyIsUnknownBelowOneCentAndRoundedFromTenDollars) {
    const struct {
        int64_t cents;
        const char *french, *english;
    } cases[] = {
        {-5, "?", "?"},  {0, "?", "?"}, {1, "0,01" NBSP "$US", "$0.01"}, {999, "9,99" NBSP "$US", "$9.99"},
        {1049, "10" NBSP "$US", "$10"}, {123456, "1" NNBSP "235" NBSP "$US", "$1,235"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(moneyText(c.cents, french), c.french) << c.cents;
        EXPECT_EQ(moneyText(c.cents, english), c.english) << c.cents;
    }
}

TEST(MenuFormatsTest, LitresWithADecimalBelowOneLitreAndRequestsOnTwoDigits) {
    const std::pair<int64_t, const char*> litres[] = {{0, "0,0 L"}, {999, "1,0 L"}, {1000, "1 L"}, {2600, "3 L"}};
    for (const auto& [milliliters, text] : litres) EXPECT_EQ(litresText(milliliters, french), text);
    EXPECT_EQ(litresText(400, english), "0.4 L");
    EXPECT_EQ(requestCountText(7) + " " + requestCountText(123), "07 123");
}

}  // namespace
}  // namespace tallowen
