#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/MenuModel.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::ScopedTimeZone;

#define NBSP "\u00a0"

UsageSample sample(const std::string& day, const std::string& tool, int64_t requests, int64_t input, int64_t output,
                   int64_t costCents, int64_t waterMilliliters, Date updatedAt) {
    UsageSample s = UsageSample::created(updatedAt);
    s.dayKey = day;
    s.tool = tool;
    s.requests = requests;
    s.inputTokens = input;
    s.outputTokens = output;
    s.estimatedCostCents = costCents;
    s.estimatedWaterMilliliters = waterMilliliters;
    return s;
}

class MenuModelTest : public ::testing::Test {
protected:
    MenuModel compute(const std::vector<UsageSample>& samples, ImporterState importer = {}, CloudSyncState sync = {}) {
        return computeMenuModel(MenuInputs{samples, std::move(importer), std::move(sync), now, calendar, french});
    }

    ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    IcuLocaleFormatter french{"fr_FR"};
    // Saturday 7 March 2026, 14:05 in Paris.
    Date now = localDate(2026, 3, 7, 14, 5);
};

TEST_F(MenuModelTest, WithoutSamplesEverySectionShowsItsEmptyState) {
    const MenuModel model = compute({});
    EXPECT_EQ(model.todayRequestsText, "00");
    EXPECT_EQ(model.todayTokensText, "0");
    EXPECT_EQ(model.tokenRatePerSecond, 0);
    EXPECT_EQ(model.todayCostText, "? au tarif API");
    EXPECT_EQ(model.todayWaterText, "0,0 L");
    EXPECT_EQ(model.waterEquivalentText, "\u2248 1 bouteilles");
    EXPECT_EQ(model.level, BottleLevel::empty);
    EXPECT_EQ(model.comparisonLine, "PREMIERS JOURS MESURÉS");
    EXPECT_TRUE(model.toolRows.empty());
    EXPECT_EQ(model.weekLine, "0 recours · 0 · ?");
    EXPECT_TRUE(model.quotaBlocks.empty());
    EXPECT_FALSE(model.hasDetectedTools);
    EXPECT_EQ(model.detectedToolsText,
              "Aucun pour l'instant. Claude Code, Codex et Cursor sont lus automatiquement. Règle des 2 heures : "
              "voir METHODOLOGY.md.");
    EXPECT_FALSE(model.errorLine);
    EXPECT_FALSE(model.lastImportText);
}

// A week of samples around Saturday 7 March: today a stale duplicate of the
// Claude Code slot, a tool this version does not know and the phone's ChatGPT.
std::vector<UsageSample> weekOfSamples(Date now) {
    const Date earlier = now.addingSeconds(-3600);
    std::vector<UsageSample> samples = {
        sample("2026-03-07", "claude-code", 99, 1, 1, 1, 1, earlier.addingSeconds(-60)),
        sample("2026-03-07", "claude-code", 12, 300000, 40000, 1250, 300, earlier),
        sample("2026-03-07", "codex", 3, 9000, 3500, 40, 100, earlier),
        sample("2026-03-07", "phone-chatgpt", 2, 0, 0, 0, 0, earlier),
        sample("2026-03-07", "future-tool", 50, 5, 5, 5, 5, earlier),
        // Earlier this week, and the day just before it.
        sample("2026-03-01", "claude-code", 20, 2000000, 500000, 900, 600, earlier),
        sample("2026-02-28", "claude-code", 40, 1000000, 0, 100, 400, earlier),
    };
    samples[2].quotaPrimaryPercent = 82.4;
    samples[2].quotaPrimaryResetAt = now.addingSeconds(3 * 3600 + 10);
    samples[2].quotaSecondaryPercent = 12;
    samples[2].quotaPlan = "plus";
    return samples;
}

TEST_F(MenuModelTest, TodayCountsOneSamplePerKnownToolAndSlot) {
    const MenuModel model = compute(weekOfSamples(now));
    EXPECT_EQ(model.todayRequestsText, "17");
    EXPECT_EQ(model.todayTokens, 352500);
    EXPECT_EQ(model.todayTokensText, "352 k");
    EXPECT_EQ(model.todayCostText, "13" NBSP "$US au tarif API");
    EXPECT_EQ(model.todayWaterText, "0,4 L");
    // 400 ml today against (1400 − 400) ÷ 2 = 500 ml on a usual day.
    EXPECT_EQ(model.level, BottleLevel::medium);
    EXPECT_EQ(model.comparisonLine, "DANS TA MOYENNE");
    // (352500 + 2500000 + 1000000) ÷ 3 measured days, spread over 57600 s.
    EXPECT_DOUBLE_EQ(model.tokenRatePerSecond, 1284166.0 / 57600.0);
    std::vector<std::string> rows;
    for (const MenuToolRow& row : model.toolRows) rows.push_back(row.label + " " + row.figuresText);
    EXPECT_EQ(rows, (std::vector<std::string>{"CHATGPT 2 · 0", "CLAUDE CODE 12 · 340 k", "CODEX 3 · 12 k"}));
}

TEST_F(MenuModelTest, TheWeekIsTodayAndTheSixDaysBefore) {
    const MenuModel model = compute(weekOfSamples(now));
    EXPECT_EQ(model.weekRequests, 37);
    EXPECT_EQ(model.weekLine, "37 recours · 2,9 M · 22" NBSP "$US");
}

TEST_F(MenuModelTest, QuotaBarsDetectedToolsAndTheImportersLines) {
    ImporterState importer;
    importer.detectedTools = {UsageTool::cursor, UsageTool::codex, UsageTool::claudeCode};
    importer.lastImport = localDate(2026, 3, 7, 13, 58);
    importer.lastError = "Store illisible : disque plein";
    const MenuModel model = compute(weekOfSamples(now), importer);
    ASSERT_EQ(model.quotaBlocks.size(), 1u);
    const MenuQuotaBlock& quota = model.quotaBlocks[0];
    EXPECT_EQ(quota.label, "CODEX");
    EXPECT_EQ(quota.plan, "PLUS");
    ASSERT_EQ(quota.bars.size(), 2u);
    EXPECT_EQ(quota.bars[0].title, "5H");
    EXPECT_EQ(quota.bars[0].percentText, "82 %");
    EXPECT_TRUE(quota.bars[0].warning);
    EXPECT_EQ(quota.bars[0].resetText, "reset 3 h");
    EXPECT_EQ(quota.bars[1].title, "7J");
    EXPECT_FALSE(quota.bars[1].warning);
    EXPECT_FALSE(quota.bars[1].resetText);

    EXPECT_EQ(model.detectedToolsText, "CLAUDE CODE · CODEX · CURSOR");
    EXPECT_EQ(model.errorLine, "Store illisible : disque plein");
    EXPECT_EQ(model.lastImportText, "Import 13:58");
}

TEST_F(MenuModelTest, CloudWarningsAndStatusLines) {
    struct Case {
        bool syncing;
        std::optional<double> secondsSinceSuccess;
        CloudWarningKind warning;
        const char* warningText;
        const char* statusLine;
        bool relaunch;
    } cases[] = {
        {true, 20000, CloudWarningKind::syncing, "Synchro iCloud en cours…", "iCloud · synchro…", false},
        {false, std::nullopt, CloudWarningKind::never, "Synchro iCloud jamais réussie sur ce Mac.",
         "iCloud · jamais connecté", true},
        {false, 10800, CloudWarningKind::none, "", "iCloud · connecté 11:05", false},
        {false, 10801, CloudWarningKind::stale, "Synchro iCloud bloquée depuis il y a 3 heures.",
         "iCloud · bloquée depuis il y a 3 heures", true},
        {false, 3 * 86400, CloudWarningKind::stale, "Synchro iCloud bloquée depuis il y a 3 jours.",
         "iCloud · bloquée depuis il y a 3 jours", true},
    };
    for (const Case& c : cases) {
        CloudSyncState sync;
        sync.isSyncing = c.syncing;
        if (c.secondsSinceSuccess) sync.lastSuccessfulSync = now.addingSeconds(-*c.secondsSinceSuccess);
        const MenuModel model = compute({}, {}, sync);
        const std::string label = std::to_string(c.secondsSinceSuccess.value_or(-1));
        EXPECT_EQ(model.cloudWarning, c.warning) << label;
        EXPECT_EQ(model.cloudWarningText, c.warningText) << label;
        EXPECT_EQ(model.syncStatusLine, c.statusLine) << label;
        EXPECT_EQ(model.showsRelaunch, c.relaunch) << label;
    }
}

TEST(MenuModelRulesTest, DevelopmentBadgeAndWeekDays) {
    EXPECT_EQ(developmentBadge(std::nullopt), std::nullopt);
    EXPECT_EQ(developmentBadge(std::string("Production")), std::nullopt);
    EXPECT_EQ(developmentBadge(std::string("production")), std::nullopt);
    EXPECT_EQ(developmentBadge(std::string("Development")), "DEVELOPMENT");
    EXPECT_EQ(developmentBadge(std::string("")), "DEVELOPMENT");

    ScopedTimeZone zone("Europe/Paris");
    // Across the end of February and the clock change of 29 March.
    EXPECT_EQ(weekDayKeys(localDate(2026, 3, 3, 0, 30), LocalCalendar{}),
              (std::vector<std::string>{"2026-03-03", "2026-03-02", "2026-03-01", "2026-02-28", "2026-02-27",
                                        "2026-02-26", "2026-02-25"}));
    EXPECT_EQ(weekDayKeys(localDate(2026, 3, 30, 23, 30), LocalCalendar{}).back(), "2026-03-24");

    ConsumptionSummary summary;
    EXPECT_EQ(tokenCounterRatePerSecond(summary), 0);
    summary.totalTokens = 57600 * 3 + 2;
    summary.measuredDays = 3;
    EXPECT_DOUBLE_EQ(tokenCounterRatePerSecond(summary), 1.0);
}

}  // namespace
}  // namespace tallowen
