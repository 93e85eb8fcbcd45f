#include "model/Iso8601Format.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tallowen {
namespace {

using testing::utcDate;

TEST(Iso8601FormatTest, WritesUtcToTheMillisecondWithAFractionOnlyWhenThereIsOne) {
    const struct {
        Date date;
        const char* text;
    } cases[] = {
        {utcDate(2025, 3, 14, 9, 15, 2), "2025-03-14T09:15:02Z"},
        {utcDate(2025, 3, 14, 9, 15, 2.25), "2025-03-14T09:15:02.250Z"},
        {utcDate(2025, 3, 14, 9, 15, 2.0004), "2025-03-14T09:15:02Z"},
        {utcDate(2025, 3, 14, 23, 59, 59.9996), "2025-03-15T00:00:00Z"},
        {Date{0}, "2001-01-01T00:00:00Z"},
        {Date::fromUnixSeconds(0), "1970-01-01T00:00:00Z"},
        {Date::fromUnixSeconds(-0.5), "1969-12-31T23:59:59.500Z"},
        {utcDate(2024, 2, 29, 12), "2024-02-29T12:00:00Z"},
        {utcDate(2100, 3, 1), "2100-03-01T00:00:00Z"},
        {Date::fromUnixSeconds(1741960800), "2025-03-14T14:00:00Z"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(iso8601UtcText(c.date), c.text);
    }
}

TEST(Iso8601FormatTest, GivesNothingForDatesThatCannotBeWritten) {
    EXPECT_FALSE(iso8601UtcText(Date{std::nan("")}));
    EXPECT_FALSE(iso8601UtcText(Date{std::numeric_limits<double>::infinity()}));
    EXPECT_FALSE(iso8601UtcText(Date{1e300}));
    EXPECT_FALSE(iso8601UtcText(Date{-1e300}));
}

}  // namespace
}  // namespace tallowen
