#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "IcuLocaleFormatter.hpp"

#include <gtest/gtest.h>

#include <map>

namespace tallowen {
namespace {

// French groups digits with a narrow no-break space and puts a no-break space before the currency.
#define NNBSP "\u202f"
#define NBSP "\u00a0"

TEST(LocaleFormatterTest, FormatsNumbersMoneyAndSeparatorsPerLocale) {
    const IcuLocaleFormatter french("fr_FR");
    const IcuLocaleFormatter english("en_US");
    EXPECT_EQ(french.decimalSeparator(), ",");
    EXPECT_EQ(english.decimalSeparator(), ".");

    EXPECT_EQ(french.decimal(0.4, 1), "0,4");
    EXPECT_EQ(english.decimal(0.4, 1), "0.4");
    EXPECT_EQ(french.decimal(0.0, 1), "0,0");
    EXPECT_EQ(french.decimal(2.6, 0), "3");
    EXPECT_EQ(french.decimal(1234.5, 1), "1" NNBSP "234,5");

    EXPECT_EQ(french.groupedInteger(1234567), "1" NNBSP "234" NNBSP "567");
    EXPECT_EQ(english.groupedInteger(1234567), "1,234,567");
    EXPECT_EQ(english.groupedInteger(-1200), "-1,200");

    EXPECT_EQ(french.usDollars(3.5, 2), "3,50" NBSP "$US");
    EXPECT_EQ(english.usDollars(3.5, 2), "$3.50");
    EXPECT_EQ(french.usDollars(1234.0, 0), "1" NNBSP "234" NBSP "$US");
    EXPECT_EQ(english.usDollars(1234.0, 0), "$1,234");
}

TEST(LocaleFormatterTest, TimeAgoUsesTheLargestWholeUnitInNamedWideWords) {
    const IcuLocaleFormatter french("fr_FR");
    const IcuLocaleFormatter english("en_US");
    struct Case {
        double seconds;
        const char* french;
        const char* english;
    } cases[] = {
        {10801, "il y a 3 heures", "3 hours ago"},
        {10799, "il y a 2 heures", "2 hours ago"},
        {59, "il y a 59 secondes", "59 seconds ago"},
        {86400, "hier", "yesterday"},
        {2 * 86400 + 3600, "avant-hier", "2 days ago"},
        {7 * 86400, "la semaine dernière", "last week"},
        {15 * 86400, "il y a 2 semaines", "2 weeks ago"},
        {800 * 86400, "il y a 2 ans", "2 years ago"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(french.timeAgo(c.seconds), c.french) << c.seconds;
        EXPECT_EQ(english.timeAgo(c.seconds), c.english) << c.seconds;
    }
}

TEST(LocaleFormatterTest, ShortTimeIsTheLocalTimeOfDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    const Date afternoon = testing::utcDate(2026, 3, 7, 13, 5, 30);  // 14:05:30 in Paris
    EXPECT_EQ(IcuLocaleFormatter("fr_FR").shortTime(afternoon), "14:05");
    EXPECT_EQ(IcuLocaleFormatter("en_US").shortTime(afternoon), "2:05" NNBSP "PM");
}

TEST(LocaleFormatterTest, LocaleNameComesFromTheFirstSetVariable) {
    EXPECT_EQ(icuLocaleNameForPosixLocale("fr_FR.UTF-8"), "fr_FR");
    EXPECT_EQ(icuLocaleNameForPosixLocale("de_DE@euro"), "de_DE");
    EXPECT_EQ(icuLocaleNameForPosixLocale("C"), "en_US");
    EXPECT_EQ(icuLocaleNameForPosixLocale("C.UTF-8"), "en_US");
    EXPECT_EQ(icuLocaleNameForPosixLocale("POSIX"), "en_US");

    const auto lookup = [](std::map<std::string, std::string> values) {
        return [values](const char* name) -> std::optional<std::string> {
            const auto found = values.find(name);
            if (found == values.end()) return std::nullopt;
            return found->second;
        };
    };
    EXPECT_EQ(icuLocaleNameFromEnvironment(lookup({})), "en_US");
    EXPECT_EQ(icuLocaleNameFromEnvironment(lookup({{"LANG", "fr_FR.UTF-8"}})), "fr_FR");
    EXPECT_EQ(icuLocaleNameFromEnvironment(lookup({{"LANG", "fr_FR.UTF-8"}, {"LC_ALL", "de_CH.UTF-8"}})), "de_CH");
    EXPECT_EQ(icuLocaleNameFromEnvironment(lookup({{"LANG", "fr_FR.UTF-8"}, {"LC_ALL", ""}, {"LC_NUMERIC", "C"}})),
              "en_US");
    EXPECT_EQ(icuLocaleNameFromEnvironment(lookup({{"LANG", "en_GB.UTF-8"}, {"LC_MONETARY", "fr_CA.UTF-8"}})),
              "fr_CA");
}

}  // namespace
}  // namespace tallowen
