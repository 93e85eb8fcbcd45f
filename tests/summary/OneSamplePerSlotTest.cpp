#include "summary/OneSamplePerSlot.hpp"
#include "support/SampleBuilder.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::SampleBuilder;

UsageSample stamped(const char* day, const char* tool, double updatedAt, const char* id, int64_t water) {
    return SampleBuilder(day, tool).updatedAt(Date{updatedAt}).id(id).water(water);
}

// The water of each kept sample, in the order of the slots' first appearance.
std::vector<int64_t> keptWater(const std::vector<UsageSample>& samples) {
    std::vector<int64_t> water;
    for (const UsageSample& sample : oneSamplePerSlot(samples)) water.push_back(sample.estimatedWaterMilliliters);
    return water;
}

TEST(OneSamplePerSlotTest, LaterUpdateThenFirstIdentifierWinsWhateverTheOrder) {
    const struct {
        std::vector<UsageSample> samples;
        std::vector<int64_t> kept;
    } cases[] = {
        {{stamped("d", "codex", 10, "b", 1), stamped("d", "codex", 20, "c", 2)}, {2}},
        {{stamped("d", "codex", 20, "c", 2), stamped("d", "codex", 10, "a", 1)}, {2}},
        // Identifiers compare as text: "x-10" sorts before "x-2".
        {{stamped("d", "codex", 10, "x-2", 1), stamped("d", "codex", 10, "x-10", 2)}, {2}},
        {{stamped("d", "codex", 10, "x-10", 2), stamped("d", "codex", 10, "x-2", 1)}, {2}},
        {{stamped("d", "codex", 10, "same", 1), stamped("d", "codex", 10, "same", 2)}, {1}},
        // Slots are day and tool together; texts that would meet once joined stay apart.
        {{stamped("d", "codex", 1, "a", 1), stamped("d", "cursor", 1, "a", 2), stamped("e", "codex", 1, "a", 3),
          stamped("d|codex", "", 1, "a", 4), stamped("d", "|codex", 1, "a", 5), stamped("d", "codex", 2, "a", 6)},
         {6, 2, 3, 4, 5}},
        {{}, {}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(keptWater(cases[i].samples), cases[i].kept) << "case " << i;
}

}  // namespace
}  // namespace tallowen
