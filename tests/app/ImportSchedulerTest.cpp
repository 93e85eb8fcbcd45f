#include "app/ImportScheduler.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

const Date t0{760000000};

TEST(ImportSchedulerTest, RequestsAtStartThenEveryFifteenSeconds) {
    ImportScheduler scheduler;
    EXPECT_FALSE(scheduler.isStarted());
    EXPECT_FALSE(scheduler.tick(t0));
    EXPECT_FALSE(scheduler.activationRecorded());
    EXPECT_FALSE(scheduler.nextDeadline());

    EXPECT_TRUE(scheduler.start(t0));
    EXPECT_FALSE(scheduler.start(t0.addingSeconds(3)));  // a second start changes nothing
    EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(15));

    struct Step {
        double at;
        bool requested;
        double nextDeadline;
    };
    const Step steps[] = {
        {14.999, false, 15}, {15, true, 30},   {16, false, 30},  {29.5, false, 30},
        {30.2, true, 45},    {91, true, 105},  {104, false, 105}, {105, true, 120},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.at);
        EXPECT_EQ(scheduler.tick(t0.addingSeconds(step.at)), step.requested);
        EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(step.nextDeadline));
    }
}

TEST(ImportSchedulerTest, ActivationsRequestAtOnceIndependentlyOfTheTimer) {
    ImportScheduler scheduler;
    scheduler.start(t0);
    EXPECT_TRUE(scheduler.activationRecorded());
    EXPECT_TRUE(scheduler.activationRecorded());
    EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(15));
}

TEST(ImportSchedulerTest, AClockSetBackRearmsFromNow) {
    ImportScheduler scheduler;
    scheduler.start(t0);
    EXPECT_FALSE(scheduler.tick(t0.addingSeconds(-3600)));
    EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(-3600 + 15));
    EXPECT_TRUE(scheduler.tick(t0.addingSeconds(-3600 + 15)));
}

}  // namespace
}  // namespace tallowen
