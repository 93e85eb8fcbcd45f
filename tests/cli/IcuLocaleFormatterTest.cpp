#include "IcuLocaleFormatter.hpp"
#include "base/JsonRead.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tallowen {
namespace {

// The table the Swift core's Foundation formatter is held to as well: each
// row's "icu" text is what this formatter writes.
TEST(IcuLocaleFormatterTest, WritesTheSharedTableOfLocaleFormats) {
    testing::ScopedTimeZone zone("UTC");
    simdjson::dom::parser parser;
    const simdjson::dom::element rows = parser.load(TALLOWEN_SOURCE_DIR "/tests/data/locale-formats.json");
    const std::string_view units[] = {"second", "minute", "hour", "day", "week", "month", "year"};
    EXPECT_GT(rows.get_array().size(), 40u);
    for (const simdjson::dom::element row : rows.get_array()) {
        const IcuLocaleFormatter locale{std::string(*json::stringMember(row, "locale"))};
        const std::string_view call = *json::stringMember(row, "call");
        const double value = json::doubleMember(row, "value").value_or(0);
        const int digits = static_cast<int>(json::int64Member(row, "digits").value_or(0));
        std::string text;
        if (call == "decimalSeparator") text = locale.decimalSeparator();
        else if (call == "decimal") text = locale.decimal(value, digits);
        else if (call == "groupedInteger") text = locale.groupedInteger(*json::int64Member(row, "value"));
        else if (call == "usDollars") text = locale.usDollars(value, digits);
        else if (call == "shortTime") text = locale.shortTime(Date{*json::doubleMember(row, "date")});
        else if (call == "upperCased") text = locale.upperCased(std::string(*json::stringMember(row, "text")));
        else if (call == "timeAgo")
            text = locale.timeAgo(RelativeTime{
                *json::int64Member(row, "count"),
                static_cast<RelativeTimeUnit>(std::find(units, std::end(units), *json::stringMember(row, "unit")) - units)});
        else ADD_FAILURE() << "unknown call " << call;
        EXPECT_EQ(text, *json::stringMember(row, "icu")) << simdjson::to_string(row);
    }
}

TEST(IcuLocaleFormatterTest, TimeAgoTakesTheLargestWholeUnitAndShortTimeTheLocalZone) {
    const std::pair<double, RelativeTime> cases[] = {
        {-5, {0, RelativeTimeUnit::second}},      {59.9, {59, RelativeTimeUnit::second}},
        {10799, {2, RelativeTimeUnit::hour}},     {10801, {3, RelativeTimeUnit::hour}},
        {2 * 86400 + 3600, {2, RelativeTimeUnit::day}}, {15 * 86400, {2, RelativeTimeUnit::week}},
        {800 * 86400, {2, RelativeTimeUnit::year}},
    };
    for (const auto& [seconds, elapsed] : cases) EXPECT_EQ(relativeTimeOf(seconds), elapsed) << seconds;

    testing::ScopedTimeZone zone("Europe/Paris");
    const Date afternoon = testing::utcDate(2026, 3, 7, 13, 5, 30);  // 14:05:30 in Paris
    EXPECT_EQ(IcuLocaleFormatter("fr_FR").shortTime(afternoon), "14:05");
}

TEST(IcuLocaleFormatterTest, LocaleNameComesFromTheFirstSetVariable) {
    // Each POSIX form turns into its ICU name.
    const std::pair<std::map<std::string, std::string>, std::string> cases[] = {
        {{}, "en_US"},
        {{{"LANG", "fr_FR.UTF-8"}}, "fr_FR"},
        {{{"LANG", "de_DE@euro"}}, "de_DE"},
        {{{"LANG", "C"}}, "en_US"},
        {{{"LANG", "C.UTF-8"}}, "en_US"},
        {{{"LC_ALL", "POSIX"}}, "en_US"},
        {{{"LANG", "fr_FR.UTF-8"}, {"LC_ALL", "de_CH.UTF-8"}}, "de_CH"},
        {{{"LANG", "fr_FR.UTF-8"}, {"LC_ALL", ""}, {"LC_NUMERIC", "C"}}, "en_US"},
        {{{"LANG", "en_GB.UTF-8"}, {"LC_MONETARY", "fr_CA.UTF-8"}}, "fr_CA"},
    };
    for (const auto& [values, expected] : cases)
        EXPECT_EQ(icuLocaleNameFromEnvironment([&](const char* name) -> std::optional<std::string> {
                      return values.count(name) ? std::optional(values.at(name)) : std::nullopt;
                  }), expected);
}

}  // namespace
}  // namespace tallowen
