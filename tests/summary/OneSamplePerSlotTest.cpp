#include "summary/OneSamplePerSlot.hpp"
#include "support/SampleBuilder.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::SampleBuilder;

UsageSample codexOn(const char* day, double updatedAt, const char* id, int64_t water) {
    return SampleBuilder(day, "codex").updatedAt(Date{updatedAt}).id(id).water(water);
}

TEST(OneSamplePerSlotTest, LaterUpdateThenFirstIdentifierWinsWhateverTheOrder) {
    struct Case {
        const char* name;
        std::vector<UsageSample> samples;
        int64_t keptWater;
    } cases[] = {
        {"later update, met last", {codexOn("2026-03-01", 10, "b", 1), codexOn("2026-03-01", 20, "c", 2)}, 2},
        {"later update, met first", {codexOn("2026-03-01", 20, "c", 2), codexOn("2026-03-01", 10, "a", 1)}, 2},
        {"tie, smaller id met last", {codexOn("2026-03-01", 10, "x-2", 1), codexOn("2026-03-01", 10, "x-10", 2)}, 2},
        {"tie, smaller id met first", {codexOn("2026-03-01", 10, "x-10", 2), codexOn("2026-03-01", 10, "x-2", 1)}, 2},
        {"identical id keeps the held one", {codexOn("2026-03-01", 10, "same", 1), codexOn("2026-03-01", 10, "same", 2)}, 1},
    };
    for (const Case& c : cases) {
        const std::vector<UsageSample> kept = oneSamplePerSlot(c.samples);
        ASSERT_EQ(kept.size(), 1u) << c.name;
        EXPECT_EQ(kept[0].estimatedWaterMilliliters, c.keptWater) << c.name;
    }
}

TEST(OneSamplePerSlotTest, SlotsAreDayAndToolTogether) {
    const std::vector<UsageSample> samples = {
        codexOn("2026-03-01", 1, "a", 1),
        SampleBuilder("2026-03-01", "cursor").water(2),
        codexOn("2026-03-02", 1, "b", 3),
        codexOn("2026-03-01", 5, "c", 4),
        // A day key and a tool that would meet in a joined text stay apart.
        SampleBuilder("2026-03-01|codex", "").water(5),
        SampleBuilder("2026-03-01", "|codex").water(6),
    };
    const std::vector<UsageSample> kept = oneSamplePerSlot(samples);
    std::vector<int64_t> water;
    for (const UsageSample& sample : kept) water.push_back(sample.estimatedWaterMilliliters);
    EXPECT_EQ(water, (std::vector<int64_t>{4, 2, 3, 5, 6}));
    EXPECT_TRUE(oneSamplePerSlot({}).empty());
}

}  // namespace
}  // namespace tallowen
