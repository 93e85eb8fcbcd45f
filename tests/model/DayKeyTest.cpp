#include "model/DayKey.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::ScopedTimeZone;

TEST(DayKeyTest, LocalDayWithMinimumWidths) {
    ScopedTimeZone zone("Europe/Paris");
    EXPECT_EQ(dayKey(localDate(2026, 1, 5, 12), LocalCalendar{}), "2026-01-05");
    EXPECT_EQ(dayKey(12026, 3, 7), "12026-03-07");
    // 23:30 UTC on 31 December is already 1 January in Paris.
    EXPECT_EQ(dayKey(testing::utcDate(2025, 12, 31, 23, 30), LocalCalendar{}), "2026-01-01");
}

TEST(DayKeyTest, KeysTurnBackIntoDayStartsAcrossAShortDay) {
    ScopedTimeZone zone("America/New_York");
    const LocalCalendar calendar;
    for (const char* key : {"2026-01-05", "2026-1-5", "2026--01-05"})
        EXPECT_EQ(dateOfDayKey(key, calendar), localDate(2026, 1, 5)) << key;
    for (const char* key : {"2026-01", "abc", "", "2026-01-05-07"}) EXPECT_FALSE(dateOfDayKey(key, calendar)) << key;
    // A day of 23 hours: the start of the next day is 23 hours later.
    const auto springStart = dateOfDayKey("2026-03-08", calendar);
    const auto nextStart = dateOfDayKey("2026-03-09", calendar);
    ASSERT_TRUE(springStart && nextStart);
    EXPECT_EQ(nextStart->secondsSince(*springStart), 23 * 3600.0);
    EXPECT_EQ(calendar.startOfDayAdding(*springStart, 1), nextStart);
}

TEST(DayKeyTest, TypedKeysMustNameARealDay) {
    const LocalCalendar calendar;
    for (const char* key : {"2024-02-29", "2025-12-31", "0001-01-01"}) EXPECT_TRUE(isCalendarDayKey(key, calendar)) << key;
    for (const char* key : {"2025-02-29", "2025-13-01", "2025-1-01", "2025/01/01", "2025-01-0a", "+025-01-01", ""})
        EXPECT_FALSE(isCalendarDayKey(key, calendar)) << key;
}

}  // namespace
}  // namespace tallowen
