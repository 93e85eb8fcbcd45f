#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/MenuModel.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::localDate;
using Texts = std::vector<std::string>;

#define NBSP "\u00a0"

UsageSample sample(const char* day, const char* tool, int64_t requests, int64_t tokens, int64_t cents, int64_t ml,
                   Date updatedAt) {
    UsageSample s = testing::SampleBuilder(day, tool).tokens(tokens).cost(cents).water(ml).updatedAt(updatedAt);
    s.requests = requests;
    return s;
}

class MenuModelTest : public ::testing::Test {
protected:
    MenuModel compute(const std::vector<UsageSample>& samples, ImporterState importer = {}, CloudSyncState sync = {}) {
        return computeMenuModel(MenuInputs{samples, std::move(importer), std::move(sync), now, calendar, french});
    }

    testing::ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    IcuLocaleFormatter french{"fr_FR"};
    Date now = localDate(2026, 3, 7, 14, 5);  // Saturday 7 March 2026 in Paris
};

TEST_F(MenuModelTest, WithoutSamplesEverySectionShowsItsEmptyState) {
    const MenuModel m = compute({});
    EXPECT_EQ((Texts{m.todayRequestsText, m.todayTokensText, m.todayCostText, m.todayWaterText, m.waterEquivalentText,
                     m.comparisonLine, m.weekLine, m.detectedToolsText}),
              (Texts{"00", "0", "? au tarif API", "0,0 L", "\u2248 1 bouteilles", "PREMIERS JOURS MESURÉS",
                     "0 recours · 0 · ?", std::string(menu_text::noDetectedTools)}));
    EXPECT_EQ(m.tokenRatePerSecond, 0);
    EXPECT_TRUE(m.toolRows.empty() && m.quotaBlocks.empty());
    EXPECT_FALSE(m.hasDetectedTools || m.errorLine || m.lastImportText);
}

TEST_F(MenuModelTest, AWeekOfSamplesFillsTodayTheWeekTheQuotasAndTheImportersLines) {
    const Date earlier = now.addingSeconds(-3600);
    std::vector<UsageSample> samples = {
        sample("2026-03-07", "claude-code", 99, 1, 1, 1, earlier.addingSeconds(-60)),  // an older copy of the slot
        sample("2026-03-07", "claude-code", 12, 340000, 1250, 300, earlier),
        sample("2026-03-07", "codex", 3, 12500, 40, 100, earlier),
        sample("2026-03-07", "phone-chatgpt", 2, 0, 0, 0, earlier),
        sample("2026-03-07", "future-tool", 50, 5, 5, 5, earlier),
        sample("2026-03-01", "claude-code", 20, 2500000, 900, 600, earlier),
        sample("2026-02-28", "claude-code", 40, 1000000, 100, 400, earlier),  // the day before the week
    };
    samples[2].quotaPrimaryPercent = 82.4;
    samples[2].quotaPrimaryResetAt = now.addingSeconds(3 * 3600 + 10);
    samples[2].quotaSecondaryPercent = 12;
    samples[2].quotaPlan = "plus";
    ImporterState importer;
    importer.detectedTools = {UsageTool::cursor, UsageTool::codex, UsageTool::claudeCode};
    importer.lastImport = localDate(2026, 3, 7, 13, 58);
    importer.lastError = "Store illisible : disque plein";

    const MenuModel m = compute(samples, importer);
    // 400 ml today against (1400 − 400) ÷ 2 = 500 ml on a usual day.
    EXPECT_EQ((Texts{m.todayRequestsText, m.todayTokensText, m.todayCostText, m.todayWaterText, m.comparisonLine,
                     m.weekLine, m.detectedToolsText, *m.errorLine, *m.lastImportText}),
              (Texts{"17", "352 k", "13" NBSP "$US au tarif API", "0,4 L", "DANS TA MOYENNE",
                     "37 recours · 2,9 M · 22" NBSP "$US", "CLAUDE CODE · CODEX · CURSOR",
                     "Store illisible : disque plein", "Import 13:58"}));
    EXPECT_EQ(m.level, BottleLevel::medium);
    // (352500 + 2500000 + 1000000) ÷ 3 measured days, spread over 57600 s.
    EXPECT_DOUBLE_EQ(m.tokenRatePerSecond, 1284166.0 / 57600.0);
    Texts rows;
    for (const MenuToolRow& row : m.toolRows) rows.push_back(row.label + " " + row.figuresText);
    EXPECT_EQ(rows, (Texts{"CHATGPT 2 · 0", "CLAUDE CODE 12 · 340 k", "CODEX 3 · 12 k"}));
    ASSERT_EQ(m.quotaBlocks.size(), 1u);
    const MenuQuotaBlock& quota = m.quotaBlocks[0];
    ASSERT_EQ(quota.bars.size(), 2u);
    const MenuQuotaBar& fiveHours = quota.bars[0];
    EXPECT_EQ((Texts{quota.label, *quota.plan, fiveHours.percentText, *fiveHours.resetText, quota.bars[1].title}),
              (Texts{"CODEX", "PLUS", "82 %", "reset 3 h", "7J"}));
    EXPECT_TRUE(fiveHours.warning);
    EXPECT_FALSE(quota.bars[1].warning || quota.bars[1].resetText);
}

TEST_F(MenuModelTest, CloudWarningsAndStatusLinesTurnStaleAfterThreeHours) {
    const struct {
        bool syncing;
        std::optional<double> secondsSinceSuccess;
        CloudWarningKind warning;
        const char* warningText;
        const char* statusLine;
    } cases[] = {
        {true, 20000, CloudWarningKind::syncing, "Synchro iCloud en cours…", "iCloud · synchro…"},
        {false, std::nullopt, CloudWarningKind::never, "Synchro iCloud jamais réussie sur ce Mac.",
         "iCloud · jamais connecté"},
        {false, -60, CloudWarningKind::none, "", "iCloud · connecté 14:06"},
        {false, 10800, CloudWarningKind::none, "", "iCloud · connecté 11:05"},
        {false, 10801, CloudWarningKind::stale, "Synchro iCloud bloquée depuis il y a 3 heures.",
         "iCloud · bloquée depuis il y a 3 heures"},
        {false, 3 * 86400, CloudWarningKind::stale, "Synchro iCloud bloquée depuis il y a 3 jours.",
         "iCloud · bloquée depuis il y a 3 jours"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.secondsSinceSuccess.value_or(-1));
        CloudSyncState sync;
        sync.isSyncing = c.syncing;
        if (c.secondsSinceSuccess) sync.lastSuccessfulSync = now.addingSeconds(-*c.secondsSinceSuccess);
        const MenuModel model = compute({}, {}, sync);
        EXPECT_EQ(model.cloudWarning, c.warning);
        EXPECT_EQ(model.cloudWarningText, c.warningText);
        EXPECT_EQ(model.syncStatusLine, c.statusLine);
        EXPECT_EQ(model.showsRelaunch, c.warning == CloudWarningKind::never || c.warning == CloudWarningKind::stale);
    }
}

TEST(MenuModelRulesTest, DevelopmentBadgeAndWeekDaysAcrossMonthEndsAndClockChanges) {
    for (const char* production : {"Production", "production"}) EXPECT_FALSE(developmentBadge(std::string(production)));
    EXPECT_FALSE(developmentBadge(std::nullopt));
    EXPECT_EQ(developmentBadge(std::string("")), "DEVELOPMENT");

    testing::ScopedTimeZone zone("Europe/Paris");
    EXPECT_EQ(weekDayKeys(localDate(2026, 3, 3, 0, 30), LocalCalendar{}),
              (Texts{"2026-03-03", "2026-03-02", "2026-03-01", "2026-02-28", "2026-02-27", "2026-02-26",
                     "2026-02-25"}));
    EXPECT_EQ(weekDayKeys(localDate(2026, 3, 30, 23, 30), LocalCalendar{}).back(), "2026-03-24");
}

}  // namespace
}  // namespace tallowen
