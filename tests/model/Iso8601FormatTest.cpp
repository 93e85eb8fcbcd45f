#include "model/Iso8601Format.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tallowen {
namespace {

using testing::utcDate;

TEST(Iso8601FormatTest, UtcToTheMillisecondWithAFractionOnlyWhenThereIsOneAndNothingOutsideTheCalendar) {
    const struct {
        Date date;
        const char* text;
    } cases[] = {
        {utcDate(2025, 3, 14, 9, 15, 2), "2025-03-14T09:15:02Z"},
        {utcDate(2025, 3, 14, 9, 15, 2.25), "2025-03-14T09:15:02.250Z"},
        {utcDate(2025, 3, 14, 9, 15, 2.0004), "2025-03-14T09:15:02Z"},
        {utcDate(2025, 3, 14, 23, 59, 59.9996), "2025-03-15T00:00:00Z"},
        {Date{0}, "2001-01-01T00:00:00Z"},
        {Date::fromUnixSeconds(-0.5), "1969-12-31T23:59:59.500Z"},
        {utcDate(2024, 2, 29, 12), "2024-02-29T12:00:00Z"},
        {Date{std::nan("")}, nullptr},
        {Date{std::numeric_limits<double>::infinity()}, nullptr},
        {Date{1e300}, nullptr},
        {Date{-1e300}, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.date.secondsSinceReferenceDate);
        EXPECT_EQ(iso8601UtcText(c.date), c.text ? std::optional<std::string>(c.text) : std::nullopt);
    }
}

}  // namespace
}  // namespace tallowen
