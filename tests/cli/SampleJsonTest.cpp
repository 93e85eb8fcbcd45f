#include "SampleJson.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

namespace tallowen::cli {
namespace {

using testing::utcDate;

std::string jsonOf(const UsageSample& sample, bool withUpdatedAt) {
    JsonWriter json;
    writeSampleJson(json, sample, withUpdatedAt);
    return json.take();
}

TEST(SampleJsonTest, WritesTheStoredFieldNamesAndOnlyThePresentQuotaValues) {
    DayUsage day;
    day.sessions = {"a#0", "a#1", "b#0"};
    day.requests = 4;
    day.inputTokens = 1500;
    day.outputTokens = 20;
    day.episodeHours = {9, 14, 23};
    day.costCents = 7;
    day.waterMilliliters = 19;
    EXPECT_EQ(jsonOf(sampleOfDay("2025-03-14", UsageTool::claudeCode, day), false),
              R"({"dayKey":"2025-03-14","tool":"claude-code","sessions":3,"requests":4,"inputTokens":1500,)"
              R"("outputTokens":20,"episodeHours":[9,14,23],"estimatedCostCents":7,"estimatedWaterMilliliters":19})");

    day.quota = QuotaSnapshot{utcDate(2025, 3, 14, 10), 42.5, utcDate(2025, 3, 14, 14, 0, 0.5), {}, {}, "plus"};
    UsageSample sample = sampleOfDay("2025-03-14", UsageTool::codex, day);
    sample.updatedAt = utcDate(2025, 3, 14, 18, 30);
    EXPECT_EQ(jsonOf(sample, true),
              R"({"dayKey":"2025-03-14","tool":"codex","sessions":3,"requests":4,"inputTokens":1500,)"
              R"("outputTokens":20,"episodeHours":[9,14,23],"estimatedCostCents":7,"estimatedWaterMilliliters":19,)"
              R"("quotaPrimaryPercent":42.5,"quotaPrimaryResetAt":"2025-03-14T14:00:00.500Z","quotaPlan":"plus",)"
              R"("updatedAt":"2025-03-14T18:30:00Z"})");
}

}  // namespace
}  // namespace tallowen::cli
