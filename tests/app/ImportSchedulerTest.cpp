#include "app/ImportScheduler.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

const Date t0{760000000};

TEST(ImportSchedulerTest, RequestsAtStartOnEachActivationAndEveryFifteenSeconds) {
    ImportScheduler scheduler;
    EXPECT_FALSE(scheduler.tick(t0) || scheduler.activationRecorded() || scheduler.nextDeadline());
    EXPECT_TRUE(scheduler.start(t0));
    EXPECT_FALSE(scheduler.start(t0.addingSeconds(3)));  // a second start changes nothing
    EXPECT_TRUE(scheduler.activationRecorded() && scheduler.activationRecorded());
    EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(15));
    const struct {
        double at;
        bool requested;
        double nextDeadline;
    } steps[] = {
        {14.999, false, 15}, {15, true, 30},      {29.5, false, 30}, {30.2, true, 45},  {91, true, 105},
        {105, true, 120},    {-3600, false, -3585}, {-3585, true, -3570},  // a clock set back rearms from now
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.at);
        EXPECT_EQ(scheduler.tick(t0.addingSeconds(step.at)), step.requested);
        EXPECT_EQ(scheduler.nextDeadline(), t0.addingSeconds(step.nextDeadline));
    }
}

}  // namespace
}  // namespace tallowen
