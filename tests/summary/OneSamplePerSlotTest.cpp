#include "summary/OneSamplePerSlot.hpp"
#include "support/SampleBuilder.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallowen {
namespace {

UsageSample sample(const char* day, const char* tool, double updatedAt, const char* id) {
    return testing::SampleBuilder(day, tool).updatedAt(Date{updatedAt}).id(id);
}

TEST(OneSamplePerSlotTest, KeepsTheLaterUpdateThenTheFirstIdentifierTextInAnyOrder) {
    const struct {
        const char* name;
        std::vector<UsageSample> samples;
        std::vector<std::string> kept;
    } cases[] = {
        {"later updatedAt wins",
         {sample("2025-03-14", "codex", 10, "a"), sample("2025-03-14", "codex", 11, "b")},
         {"b"}},
        {"tie: identifier text sorting first, by code points",
         {sample("2025-03-14", "codex", 10, "x-10"), sample("2025-03-14", "codex", 10, "x-9"),
          sample("2025-03-14", "codex", 10, "X-99")},
         {"X-99"}},
        {"slots are day and tool, unknown tools included, sorted by day then tool",
         {sample("2025-03-15", "codex", 1, "1"), sample("2025-03-14", "phone-new-tool", 1, "2"),
          sample("2025-03-14", "codex", 1, "3"), sample("2025-03-14", "claude-code", 1, "4")},
         {"4", "3", "2", "1"}},
        {"day and tool stay apart even where their joined texts would meet",
         {sample("d", "codex", 1, "1"), sample("d|codex", "", 1, "2"), sample("d", "|codex", 1, "3")},
         {"1", "3", "2"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<UsageSample> samples = c.samples;
        for (const bool reversed : {false, true}) {
            if (reversed) std::reverse(samples.begin(), samples.end());
            std::vector<std::string> ids;
            for (const auto& s : oneSamplePerSlot(samples)) ids.push_back(s.persistentId);
            EXPECT_EQ(ids, c.kept);
        }
    }
    EXPECT_TRUE(oneSamplePerSlot(std::vector<UsageSample>{}).empty());
}

TEST(OneSamplePerSlotTest, AnIdenticalIdentifierKeepsTheSampleHeld) {
    std::vector<UsageSample> twins = {sample("2025-03-14", "codex", 10, "a"), sample("2025-03-14", "codex", 10, "a")};
    twins[1].requests = 2;
    const auto kept = oneSamplePerSlot(twins);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept.front().requests, 0);
}

}  // namespace
}  // namespace tallowen
