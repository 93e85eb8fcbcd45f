#include "model/DaysFromEvents.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;

UsageEvent eventAt(Date date, int64_t input = 0, int64_t output = 0) {
    return UsageEvent{date, input, output, 1, 2};
}

TEST(DaysFromEventsTest, EpisodeRuleSplitsSessionsAndBooksHoursOnTheStartDay) {
    testing::ScopedTimeZone zone("Europe/Paris");
    const LocalCalendar calendar;

    // Gap 11:59 -> 14:00 is over two hours: two episodes.
    DayMap days = daysFromEvents({eventAt(localDate(2025, 3, 14, 14)), eventAt(localDate(2025, 3, 14, 10)),
                                  eventAt(localDate(2025, 3, 14, 11, 59))},
                                 "s", calendar);
    ASSERT_EQ(days.size(), 1u);
    const DayUsage& day = days.at("2025-03-14");
    EXPECT_EQ(day.sessions, (std::set<std::string>{"s#0", "s#1"}));
    EXPECT_EQ(day.requests, 3);
    EXPECT_EQ(day.episodeHours, (std::vector<int64_t>{10, 14}));
    EXPECT_EQ(day.costCents, 3);
    EXPECT_EQ(day.waterMilliliters, 6);

    // Exactly two hours apart stays one episode.
    days = daysFromEvents({eventAt(localDate(2025, 3, 14, 10)), eventAt(localDate(2025, 3, 14, 12))}, "s", calendar);
    EXPECT_EQ(days.at("2025-03-14").sessions, (std::set<std::string>{"s#0"}));

    // Across midnight: the session and hour stay on the first day.
    days = daysFromEvents({eventAt(localDate(2025, 3, 14, 23, 30), 5, 1), eventAt(localDate(2025, 3, 15, 0, 30), 7, 2)},
                          "abc123", calendar);
    ASSERT_EQ(days.size(), 2u);
    EXPECT_EQ(days.at("2025-03-14").sessions, (std::set<std::string>{"abc123#0"}));
    EXPECT_EQ(days.at("2025-03-14").episodeHours, (std::vector<int64_t>{23}));
    EXPECT_EQ(days.at("2025-03-14").inputTokens, 5);
    EXPECT_TRUE(days.at("2025-03-15").sessions.empty());
    EXPECT_TRUE(days.at("2025-03-15").episodeHours.empty());
    EXPECT_EQ(days.at("2025-03-15").requests, 1);
    EXPECT_EQ(days.at("2025-03-15").outputTokens, 2);

    EXPECT_TRUE(daysFromEvents({}, "s", calendar).empty());
}

TEST(DaysFromEventsTest, MergingUnitesSessionsAndKeepsTheLaterQuota) {
    DayUsage a;
    a.sessions = {"x#0"};
    a.requests = 2;
    a.episodeHours = {9};
    a.quota = QuotaSnapshot{Date{100}, 10.0, {}, {}, {}, "plus"};
    DayUsage b;
    b.sessions = {"x#0", "y#0"};
    b.requests = 3;
    b.episodeHours = {9};
    b.quota = QuotaSnapshot{Date{50}, 99.0, {}, {}, {}, {}};
    mergeDayUsage(a, b);
    EXPECT_EQ(a.sessions.size(), 2u);
    EXPECT_EQ(a.requests, 5);
    EXPECT_EQ(a.episodeHours, (std::vector<int64_t>{9, 9}));
    EXPECT_EQ(a.quota->primaryPercent, 10.0);
    b.quota->at = Date{200};
    mergeDayUsage(a, b);
    EXPECT_EQ(a.quota->primaryPercent, 99.0);
}

TEST(DaysFromEventsDeathTest, TokenOverflowStopsTheProcess) {
    const int64_t big = INT64_MAX - 1;
    EXPECT_DEATH(daysFromEvents({eventAt(Date{0}, big), eventAt(Date{1}, big)}, "s", LocalCalendar{}),
                 "overflow");
}

}  // namespace
}  // namespace tallowen
