#include "import/ImportReportJson.hpp"
#include "import/ImportReportText.hpp"
#include "import/ScanReport.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(ReportsTest, AScanTableRowEndsWithTheWholePlanAndTheCountsWithTheUnreadableFiles) {
    const DayUsage withPlan{{}, 0, 0, 0, {}, 0, 0, QuotaSnapshot{Date{0}, 50.0, {}, {}, {}, std::string(600, 'p')}};
    LogReadOutcome outcome;
    outcome.results[UsageTool::codex] = {{"2025-03-14", withPlan}, {"2025-03-15", DayUsage{}}};
    outcome.counters = ScanCounters{1, 2, 3};
    const std::string text = scanReportText(outcome);
    EXPECT_NE(text.find("0  50% / - " + std::string(600, 'p') + "\n2025-03-15  codex "), std::string::npos) << text;
    EXPECT_NE(text.find("0.00          0\n\nfiles read: 1, reused: 2, unreadable: 3\n"), std::string::npos) << text;
    EXPECT_EQ(text.rfind("detected: none\n", 0), 0u);
}

TEST(ReportsTest, ADroppedRequestSaysWhyInTextAndInJson) {
    ImportRunReport dropped;
    dropped.outcome = ImportRunReport::Outcome::droppedRunUnderWay;
    EXPECT_EQ(importReportText(dropped), "import dropped: an import is already under way\n");
    EXPECT_EQ(importReportJson(dropped),
              R"({"outcome":"dropped","reason":"an import is already under way","detectedTools":[],)"
              R"("samplesInserted":0,"samplesUpdated":0,"samplesUnchanged":0,"duplicatesRemoved":0,"filesRead":0,)"
              R"("filesReused":0,"elapsedSeconds":0,"lastError":null})");
}

}  // namespace
}  // namespace tallowen
