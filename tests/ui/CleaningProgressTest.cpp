#include "ui/CleaningProgress.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

TEST(CleaningProgressTest, PercentRoundsHalfUpAndTheBarStopsAtItsEnd) {
    const struct {
        double progress;
        const char* text;
        double fraction;
    } cases[] = {
        {0, "0 %", 0},           {0.004, "0 %", 0.004}, {0.005, "1 %", 0.005},
        {0.5, "50 %", 0.5},      {1, "100 %", 1},       {1.234, "123 %", 1},
        {-0.2, "-20 %", 0},      {std::numeric_limits<double>::quiet_NaN(), "0 %", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cleaningPercentText(c.progress), c.text) << c.progress;
        EXPECT_DOUBLE_EQ(cleaningBarFraction(c.progress), c.fraction) << c.progress;
    }
}

}  // namespace
}  // namespace tallowen
