#include "IcuLocaleFormatter.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

#define NNBSP "\u202f"
#define NBSP "\u00a0"

TEST(MenuFormatsTest, TokensInBothLocales) {
    const IcuLocaleFormatter french("fr_FR");
    const IcuLocaleFormatter english("en_US");
    struct Case {
        int64_t tokens;
        const char* french;
        const char* english;
    } cases[] = {
        {0, "0", "0"},
        {999, "999", "999"},
        {1000, "1 k", "1 k"},
        {1234, "1 k", "1 k"},
        {999999, "999 k", "999 k"},
        {1000000, "1,0 M", "1.0 M"},
        {2500000, "2,5 M", "2.5 M"},
        {12345678901, "12345,7 M", "12345.7 M"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(tokenText(c.tokens, french), c.french) << c.tokens;
        EXPECT_EQ(tokenText(c.tokens, english), c.english) << c.tokens;
    }
}

TEST(MenuFormatsTest, MoneyIsUnknownBelowOneCentAndRoundedFromTenDollars) {
    const IcuLocaleFormatter french("fr_FR");
    const IcuLocaleFormatter english("en_US");
    struct Case {
        int64_t cents;
        const char* french;
        const char* english;
    } cases[] = {
        {-5, "?", "?"},
        {0, "?", "?"},
        {1, "0,01" NBSP "$US", "$0.01"},
        {999, "9,99" NBSP "$US", "$9.99"},
        {1000, "10" NBSP "$US", "$10"},
        {1049, "10" NBSP "$US", "$10"},
        {123456, "1" NNBSP "235" NBSP "$US", "$1,235"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(moneyText(c.cents, french), c.french) << c.cents;
        EXPECT_EQ(moneyText(c.cents, english), c.english) << c.cents;
    }
}

TEST(MenuFormatsTest, LitresAndRequestCounts) {
    const IcuLocaleFormatter french("fr_FR");
    EXPECT_EQ(litresText(0, french), "0,0 L");
    EXPECT_EQ(litresText(400, french), "0,4 L");
    EXPECT_EQ(litresText(999, french), "1,0 L");
    EXPECT_EQ(litresText(1000, french), "1 L");
    EXPECT_EQ(litresText(2600, french), "3 L");
    EXPECT_EQ(litresText(400, IcuLocaleFormatter("en_US")), "0.4 L");

    EXPECT_EQ(requestCountText(0), "00");
    EXPECT_EQ(requestCountText(7), "07");
    EXPECT_EQ(requestCountText(123), "123");
}

}  // namespace
}  // namespace tallowen
