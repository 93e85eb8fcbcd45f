#include "summary/BottleLevel.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(BottleLevelTest, RawValuesZeroToFourInOrder) {
    for (int raw = 0; raw <= 4; ++raw) EXPECT_EQ(bottleLevelFromRawValue(raw), allBottleLevels[static_cast<size_t>(raw)]);
    for (const int64_t raw : {-1LL, 5LL, 4294967298LL}) EXPECT_FALSE(bottleLevelFromRawValue(raw)) << raw;
}

TEST(BottleLevelTest, RatioBoundariesBelongToTheHigherLevel) {
    const struct {
        int64_t today;
        int64_t reference;
        BottleLevel level;
    } cases[] = {
        {0, 20, BottleLevel::empty},   {-5, 20, BottleLevel::empty},   {1, 0, BottleLevel::medium},
        {500, -3, BottleLevel::medium}, {9, 20, BottleLevel::low},      {10, 20, BottleLevel::medium},
        {29, 20, BottleLevel::medium},  {30, 20, BottleLevel::full},    {59, 20, BottleLevel::full},
        {60, 20, BottleLevel::overflow},
    };
    for (const auto& c : cases) EXPECT_EQ(bottleLevel(c.today, c.reference), c.level) << c.today << " / " << c.reference;
}

}  // namespace
}  // namespace tallowen
