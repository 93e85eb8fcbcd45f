#include "summary/BottleLevel.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(BottleLevelTest, RawValuesZeroToFourInOrder) {
    for (int raw = 0; raw <= 4; ++raw) {
        ASSERT_TRUE(bottleLevelFromRawValue(raw)) << raw;
        EXPECT_EQ(rawValue(*bottleLevelFromRawValue(raw)), raw);
        EXPECT_EQ(allBottleLevels[static_cast<size_t>(raw)], *bottleLevelFromRawValue(raw));
    }
    for (const int64_t raw : {int64_t{-1}, int64_t{5}, int64_t{4294967298}}) EXPECT_FALSE(bottleLevelFromRawValue(raw)) << raw;
}

TEST(BottleLevelTest, RatioBoundariesBelongToTheHigherLevel) {
    const struct {
        int64_t today;
        int64_t reference;
        BottleLevel level;
    } cases[] = {
        {0, 20, BottleLevel::empty},    {-5, 20, BottleLevel::empty},   {0, 0, BottleLevel::empty},
        {1, 0, BottleLevel::medium},    {500, -3, BottleLevel::medium}, {9, 20, BottleLevel::low},
        {10, 20, BottleLevel::medium},  {29, 20, BottleLevel::medium},  {30, 20, BottleLevel::full},
        {59, 20, BottleLevel::full},    {60, 20, BottleLevel::overflow}, {1000000, 1, BottleLevel::overflow},
    };
    for (const auto& c : cases) EXPECT_EQ(bottleLevel(c.today, c.reference), c.level) << c.today << " / " << c.reference;
}

TEST(BottleLevelTest, NoReferenceIsTestedBeforeTheLevel) {
    const char* lines[] = {"RIEN AUJOURD'HUI", "SOUS TA MOYENNE", "DANS TA MOYENNE", "AU-DESSUS DE TA MOYENNE",
                           "LE TRIPLE DE TA MOYENNE"};
    for (const BottleLevel level : allBottleLevels) EXPECT_EQ(comparisonLine(level), lines[rawValue(level)]);

    ConsumptionSummary summary;
    summary.dayReferenceMilliliters = 0;
    summary.todayWaterMilliliters = 0;
    EXPECT_EQ(bottleLevel(summary), BottleLevel::empty);
    EXPECT_EQ(waterComparisonLine(summary), "PREMIERS JOURS MESURÉS");
    summary.todayWaterMilliliters = 700;
    EXPECT_EQ(bottleLevel(summary), BottleLevel::medium);
    EXPECT_EQ(waterComparisonLine(summary), "PREMIERS JOURS MESURÉS");
    summary.dayReferenceMilliliters = 1;
    EXPECT_EQ(waterComparisonLine(summary), "LE TRIPLE DE TA MOYENNE");
}

}  // namespace
}  // namespace tallowen
