#include "model/DaysFromEvents.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;

UsageEvent at(int day, int hour, int minute, int64_t input = 0) {
    return UsageEvent{localDate(2025, 3, day, hour, minute), input, 1, 1, 2};
}

// Episodes split on a pause of more than two hours; each counts on the day it began.
TEST(DaysFromEventsTest, EpisodeRuleSplitsSessionsAndBooksHoursOnTheStartDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    const LocalCalendar calendar;
    EXPECT_EQ(daysFromEvents({at(14, 14, 0), at(14, 10, 0), at(14, 11, 59)}, "s", calendar),
              (DayMap{{"2025-03-14", {{"s#0", "s#1"}, 3, 0, 3, {10, 14}, 3, 6, {}}}}));
    EXPECT_EQ(daysFromEvents({at(14, 10, 0), at(14, 12, 0)}, "s", calendar),
              (DayMap{{"2025-03-14", {{"s#0"}, 2, 0, 2, {10}, 2, 4, {}}}}));
    EXPECT_EQ(daysFromEvents({at(14, 23, 30, 5), at(15, 0, 30, 7)}, "abc", calendar),
              (DayMap{{"2025-03-14", {{"abc#0"}, 1, 5, 1, {23}, 1, 2, {}}},
                      {"2025-03-15", {{}, 1, 7, 1, {}, 1, 2, {}}}}));
    EXPECT_TRUE(daysFromEvents({}, "s", calendar).empty());
}

TEST(DaysFromEventsDeathTest, TokenOverflowStopsTheProcess) {
    const int64_t big = INT64_MAX - 1;
    EXPECT_DEATH(daysFromEvents({{Date{0}, big, 0, 0, 0}, {Date{1}, big, 0, 0, 0}}, "s", LocalCalendar{}), "overflow");
}

}  // namespace
}  // namespace tallowen
