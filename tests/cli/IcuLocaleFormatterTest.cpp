#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"

#include "base/JsonRead.hpp"

#include <gtest/gtest.h>

#include <map>

namespace tallowen {
namespace {

#define NNBSP "\u202f"

// The table the Swift core's Foundation formatter is held to as well: each
// row's "icu" text is what this formatter writes.
TEST(IcuLocaleFormatterTest, WritesTheSharedTableOfLocaleFormats) {
    testing::ScopedTimeZone zone("UTC");
    simdjson::dom::parser parser;
    const simdjson::dom::element rows = parser.load(TALLOWEN_SOURCE_DIR "/tests/data/locale-formats.json");
    const std::map<std::string_view, RelativeTimeUnit> units = {
        {"second", RelativeTimeUnit::second}, {"minute", RelativeTimeUnit::minute}, {"hour", RelativeTimeUnit::hour},
        {"day", RelativeTimeUnit::day},       {"week", RelativeTimeUnit::week},     {"month", RelativeTimeUnit::month},
        {"year", RelativeTimeUnit::year}};
    int checked = 0;
    for (const simdjson::dom::element row : rows.get_array()) {
        const IcuLocaleFormatter locale{std::string(*json::stringMember(row, "locale"))};
        const std::string_view call = *json::stringMember(row, "call");
        const auto number = [&](const char* key) { return json::doubleMember(row, key).value_or(0); };
        const int digits = static_cast<int>(json::int64Member(row, "digits").value_or(0));
        std::string text;
        if (call == "decimalSeparator") text = locale.decimalSeparator();
        else if (call == "decimal") text = locale.decimal(number("value"), digits);
        else if (call == "groupedInteger") text = locale.groupedInteger(*json::int64Member(row, "value"));
        else if (call == "usDollars") text = locale.usDollars(number("value"), digits);
        else if (call == "timeAgo")
            text = locale.timeAgo(RelativeTime{*json::int64Member(row, "count"),
                                               units.at(*json::stringMember(row, "unit"))});
        else if (call == "shortTime") text = locale.shortTime(Date{number("date")});
        else if (call == "upperCased") text = locale.upperCased(std::string(*json::stringMember(row, "text")));
        else ADD_FAILURE() << "unknown call " << call;
        EXPECT_EQ(text, *json::stringMember(row, "icu")) << simdjson::to_string(row);
        ++checked;
    }
    EXPECT_GT(checked, 40);
}

TEST(IcuLocaleFormatterTest, TimeAgoTakesTheLargestWholeUnit) {
    const struct {
        double seconds;
        RelativeTime elapsed;
    } cases[] = {
        {-5, {0, RelativeTimeUnit::second}},      {59.9, {59, RelativeTimeUnit::second}},
        {10799, {2, RelativeTimeUnit::hour}},     {10801, {3, RelativeTimeUnit::hour}},
        {2 * 86400 + 3600, {2, RelativeTimeUnit::day}}, {15 * 86400, {2, RelativeTimeUnit::week}},
        {800 * 86400, {2, RelativeTimeUnit::year}},
    };
    for (const auto& c : cases) EXPECT_EQ(relativeTimeOf(c.seconds), c.elapsed) << c.seconds;
    EXPECT_EQ(IcuLocaleFormatter("fr_FR").timeAgo(86400), "hier");
}

TEST(IcuLocaleFormatterTest, ShortTimeIsTheLocalTimeOfDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    const Date afternoon = testing::utcDate(2026, 3, 7, 13, 5, 30);  // 14:05:30 in Paris
    EXPECT_EQ(IcuLocaleFormatter("fr_FR").shortTime(afternoon), "14:05");
    EXPECT_EQ(IcuLocaleFormatter("en_US").shortTime(afternoon), "2:05" NNBSP "PM");
}

TEST(IcuLocaleFormatterTest, LocaleNameComesFromTheFirstSetVariable) {
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
