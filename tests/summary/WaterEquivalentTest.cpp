#include "summary/WaterEquivalent.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(WaterEquivalentTest, BottlesBelowNinetyLitresThenShowers) {
    const struct {
        int64_t milliliters;
        const char* text;
    } cases[] = {
        {-4000, "\u2248 1 bouteilles"}, {2249, "\u2248 1 bouteilles"}, {2250, "\u2248 2 bouteilles"},
        {89999, "\u2248 60 bouteilles"}, {90000, "\u2248 2 douches"},  {149999, "\u2248 2 douches"},
        {150000, "\u2248 3 douches"},   {60000000000, "\u2248 1000000 douches"},
    };
    for (const auto& c : cases) EXPECT_EQ(waterEquivalentText(c.milliliters), c.text) << c.milliliters;
}

}  // namespace
}  // namespace tallowen
