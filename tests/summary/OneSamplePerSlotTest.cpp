#include "summary/OneSamplePerSlot.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

UsageSample sample(const char* day, const char* tool, double updatedAt, const char* id, int64_t requests = 0) {
    UsageSample s;
    s.dayKey = day;
    s.tool = tool;
    s.updatedAt = Date{updatedAt};
    s.persistentId = id;
    s.requests = requests;
    return s;
}

std::vector<std::string> keptIds(const std::vector<UsageSample>& samples) {
    std::vector<std::string> ids;
    for (const auto& s : oneSamplePerSlot(samples)) ids.push_back(s.persistentId);
    return ids;
}

TEST(OneSamplePerSlotTest, KeepsTheLaterUpdateThenTheFirstIdentifierText) {
    struct Case {
        const char* name;
        std::vector<UsageSample> samples;
        std::vector<std::string> kept;
    };
    const std::vector<Case> cases = {
        {"later updatedAt wins in either order",
         {sample("2025-03-14", "codex", 10, "a"), sample("2025-03-14", "codex", 11, "b")},
         {"b"}},
        {"later updatedAt wins in either order (reversed)",
         {sample("2025-03-14", "codex", 11, "b"), sample("2025-03-14", "codex", 10, "a")},
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
        {"nothing", {}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(keptIds(c.samples), c.kept);
    }
}

TEST(OneSamplePerSlotTest, AnIdenticalIdentifierKeepsTheSampleHeld) {
    const auto kept =
        oneSamplePerSlot({sample("2025-03-14", "codex", 10, "a", 1), sample("2025-03-14", "codex", 10, "a", 2)});
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept.front().requests, 1);
}

}  // namespace
}  // namespace tallowen
