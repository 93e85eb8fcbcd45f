#include "summary/DaySelection.hpp"
#include "support/Samples.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::slotSample;

TEST(DaySelectionTest, OneSamplePerSlotThenTheSelectedDaysAndTool) {
    const std::vector<UsageSample> stored = {
        slotSample("2025-03-01", "phone-newtool", Date{5}, 1), slotSample("2025-03-02", "codex", Date{5}, 2),
        slotSample("2025-03-02", "codex", Date{9}, 3),         slotSample("2025-03-03", "claude-code", Date{5}, 4),
        slotSample("2025-03-04", "codex", Date{5}, 5),
    };
    const struct {
        DaySelection selection;
        std::vector<int64_t> requests;
    } cases[] = {
        {{}, {1, 3, 4, 5}},
        {{"2025-03-02", "2025-03-03", {}}, {3, 4}},
        {{{}, {}, "codex"}, {3, 5}},
        {{"2025-03-04", {}, "codex"}, {5}},
        {{{}, {}, "phone-newtool"}, {1}},
        {{{}, {}, "claude"}, {}},
    };
    for (const auto& c : cases) {
        std::vector<int64_t> requests;
        for (const UsageSample& sample : selectedDays(stored, c.selection)) requests.push_back(sample.requests);
        EXPECT_EQ(requests, c.requests) << c.selection.since.value_or("") << c.selection.tool.value_or("");
    }
}

TEST(DaySelectionTest, DayKeysAreFourTwoAndTwoDigits) {
    EXPECT_TRUE(isDayKeyText("2025-03-14"));
    for (const char* text : {"2025-3-14", "2025-03-1a", "2025/03/14", "yesterday", "", "2025-03-140"})
        EXPECT_FALSE(isDayKeyText(text)) << text;
}

}  // namespace
}  // namespace tallowen
