#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/MenuModel.hpp"
#include "ui/PanelLayout.hpp"
#include "ui/PanelSession.hpp"
#include "ui/TypewriterTitle.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using testing::localDate;
using testing::SampleBuilder;
using Texts = std::vector<std::string>;

#define NBSP "\u00a0"
#define NNBSP "\u202f"

UsageSample sample(const char* day, const char* tool, int64_t requests, int64_t tokens, int64_t cents, int64_t ml,
                   Date updatedAt) {
    return SampleBuilder(day, tool).requests(requests).tokens(tokens).cost(cents).water(ml).updatedAt(updatedAt);
}

class MenuModelTest : public ::testing::Test {
protected:
    MenuModel compute(const std::vector<UsageSample>& samples, ImporterState importer = {}, CloudSyncState sync = {}) {
        return computeMenuModel(MenuInputs{samples, std::move(importer), std::move(sync), now, calendar, french});
    }
    // A session whose title has long come to rest, its cursor shown for 0.25 s more.
    PanelSession session(PanelOptions options = {}) const {
        return PanelSession(french, calendar, options, now.addingSeconds(-3600.25));
    }
    UsageSample today(const std::string& tool, int64_t tokens) const {
        return SampleBuilder("2026-03-07", tool).tokens(tokens).updatedAt(now.addingSeconds(-60));
    }

    testing::ScopedTimeZone zone{"Europe/Paris"};
    LocalCalendar calendar;
    IcuLocaleFormatter french{"fr_FR"};
    Date now = localDate(2026, 3, 7, 14, 5);  // Saturday 7 March 2026 in Paris
};

using PanelSessionTest = MenuModelTest;

TEST_F(MenuModelTest, AWeekOfSamplesFillsTodayTheWeekAndTheImportersLines) {
    const Date earlier = now.addingSeconds(-3600);
    const std::vector<UsageSample> samples = {
        sample("2026-03-07", "claude-code", 99, 1, 1, 1, earlier.addingSeconds(-60)),  // an older copy of the slot
        sample("2026-03-07", "claude-code", 12, 340000, 1250, 300, earlier),
        sample("2026-03-07", "codex", 3, 12500, 40, 100, earlier),
        sample("2026-03-07", "phone-chatgpt", 2, 0, 0, 0, earlier),
        sample("2026-03-07", "future-tool", 50, 5, 5, 5, earlier),
        sample("2026-03-01", "claude-code", 20, 2500000, 900, 600, earlier),
        sample("2026-02-28", "claude-code", 40, 1000000, 100, 400, earlier),  // the day before the week
    };
    ImporterState importer;
    importer.lastImport = localDate(2026, 3, 7, 13, 58);

    const MenuModel m = compute(samples, importer);
    // 400 ml today against (1400 − 400) ÷ 2 = 500 ml on a usual day.
    EXPECT_EQ((Texts{m.todayRequestsText, m.todayTokensText, m.todayCostText, m.todayWaterText, m.comparisonLine,
                     m.weekLine, *m.lastImportText}),
              (Texts{"17", "352 k", "13" NBSP "$US au tarif API", "0,4 L", "DANS TA MOYENNE",
                     "37 recours · 2,9 M · 22" NBSP "$US", "Import 13:58"}));
    // (352500 + 2500000 + 1000000) ÷ 3 measured days, spread over 57600 s.
    EXPECT_DOUBLE_EQ(m.tokenRatePerSecond, 1284166.0 / 57600.0);
    Texts rows;
    for (const MenuToolRow& row : m.toolRows) rows.push_back(row.label + " " + row.figuresText);
    EXPECT_EQ(rows, (Texts{"CHATGPT 2 · 0", "CLAUDE CODE 12 · 340 k", "CODEX 3 · 12 k"}));
}

TEST_F(MenuModelTest, CloudWarningsAndStatusLinesTurnStaleAfterThreeHours) {
    // Syncing, seconds since the last success, the warning, its text and the status line.
    const std::tuple<bool, std::optional<double>, CloudWarningKind, const char*, const char*> cases[] = {
        {true, 20000, CloudWarningKind::syncing, "Synchro iCloud en cours…", "iCloud · synchro…"},
        {false, std::nullopt, CloudWarningKind::never, "Synchro iCloud jamais réussie sur ce Mac.",
         "iCloud · jamais connecté"},
        {false, -60, CloudWarningKind::none, "", "iCloud · connecté 14:06"},
        {false, 10800, CloudWarningKind::none, "", "iCloud · connecté 11:05"},
        {false, 10801, CloudWarningKind::stale, "Synchro iCloud bloquée depuis il y a 3 heures.",
         "iCloud · bloquée depuis il y a 3 heures"},
    };
    for (const auto& [syncing, secondsSinceSuccess, warning, warningText, statusLine] : cases) {
        SCOPED_TRACE(statusLine);
        CloudSyncState sync;
        sync.isSyncing = syncing;
        if (secondsSinceSuccess) sync.lastSuccessfulSync = now.addingSeconds(-*secondsSinceSuccess);
        const MenuModel model = compute({}, {}, sync);
        EXPECT_EQ(model.cloudWarning, warning);
        EXPECT_EQ((Texts{model.cloudWarningText, model.syncStatusLine}), (Texts{warningText, statusLine}));
        EXPECT_EQ(model.showsRelaunch, warning == CloudWarningKind::never || warning == CloudWarningKind::stale);
    }
}

TEST_F(MenuModelTest, DevelopmentBadgeAndWeekDaysAcrossAClockChange) {
    for (const char* production : {"Production", "production"}) EXPECT_FALSE(developmentBadge(std::string(production)));
    EXPECT_FALSE(developmentBadge(std::nullopt));
    EXPECT_EQ(developmentBadge(std::string("")), "DEVELOPMENT");
    EXPECT_EQ(weekDayKeys(localDate(2026, 3, 30, 23, 30), calendar).back(), "2026-03-24");
}

TEST_F(PanelSessionTest, AnEmptyStoreGivesTheEmptyPanelAndOnlyTheOfferedCommands) {
    PanelSession terminal = session();
    terminal.importerChanged(ImporterState{});
    const PanelFrame frame = terminal.frame(now);
    const MenuModel& m = terminal.model();
    EXPECT_EQ((Texts{m.todayRequestsText, frame.today.counter.text, m.todayCostText, m.todayWaterText,
                     m.waterEquivalentText, m.comparisonLine, m.weekLine, m.detectedToolsText}),
              (Texts{"00", "0", "? au tarif API", "0,0 L", "\u2248 1 bouteilles", "PREMIERS JOURS MESURÉS",
                     "0 recours · 0 · ?", std::string(menu_text::noDetectedTools)}));
    EXPECT_EQ(m.tokenRatePerSecond, 0);
    EXPECT_EQ(frame.detectedTools.role, TextRole::dimmed);
    EXPECT_EQ(frame.footer.importRole, TextRole::primary);
    EXPECT_FALSE(frame.cleaning || !frame.toolRows.empty() || frame.quotas || frame.errorLine || frame.cloudWarning ||
                 frame.loginItem || frame.updateButton || frame.footer.lastImportText || frame.footer.syncStatusLine);

    const PanelFrame mac = session(PanelOptions{true, true, true}).frame(now);
    EXPECT_TRUE(mac.cloudWarning && mac.loginItem && mac.updateButton && mac.footer.syncStatusLine);
}

TEST_F(PanelSessionTest, ToolsComeFromTheStoreOnlyWhenNoRunFoundThem) {
    PanelSession panel = session();
    panel.samplesReloaded({today("cursor", 10), today("phone-chatgpt", 10), today("claude-code", 10)});
    ImporterState state;
    state.detectedToolsFromStore = true;
    panel.importerChanged(state);
    EXPECT_EQ(panel.frame(now).detectedTools.text, "CLAUDE CODE · CURSOR");
    EXPECT_EQ(panel.frame(now).detectedTools.role, TextRole::primary);

    state = ImporterState{};
    state.isImporting = true;
    panel.importerChanged(state);
    const PanelFrame importing = panel.frame(now);
    EXPECT_EQ(std::pair(importing.detectedTools.role, importing.footer.importRole),
              std::pair(TextRole::dimmed, TextRole::disabled));
    EXPECT_TRUE(importing.showsImportIndicator && !importing.footer.importEnabled);
}

TEST_F(PanelSessionTest, TheImportersErrorComesBeforeAStoreFailureWhichTheNextReadForgets) {
    PanelSession panel = session();
    panel.storeFailed("Store illisible : disque plein");
    ImporterState failed;
    failed.lastError = "Nettoyage des doublons : verrou";
    panel.importerChanged(failed);
    EXPECT_EQ(panel.frame(now).errorLine, "Nettoyage des doublons : verrou");
    panel.importerChanged(ImporterState{});
    panel.samplesReloaded({});
    EXPECT_FALSE(panel.frame(now).errorLine);
}

TEST_F(PanelSessionTest, TheCleaningViewReplacesThePanelWhileThePurgeRuns) {
    PanelSession panel = session();
    ImporterState purging;
    purging.isImporting = true;
    purging.purgeProgress = 0.37;
    panel.importerChanged(purging);
    const PanelFrame frame = panel.frame(now);
    ASSERT_TRUE(frame.cleaning);
    EXPECT_EQ(frame.cleaning->note, "Une seule fois. Les doublons partent, tes chiffres restent.");
    EXPECT_FALSE(frame.showsImportIndicator);
    // The percent rounds half up; the bar stops at its ends.
    const std::tuple<double, const char*, double> cases[] = {
        {0.004, "0 %", 0.004}, {0.005, "1 %", 0.005},         {1.234, "123 %", 1},
        {-0.2, "-20 %", 0},    {std::numeric_limits<double>::quiet_NaN(), "0 %", 0}};
    for (const auto& [progress, text, fraction] : cases) {
        purging.purgeProgress = progress;
        panel.importerChanged(purging);
        EXPECT_EQ(panel.frame(now).cleaning->percentText, text) << progress;
        EXPECT_DOUBLE_EQ(panel.frame(now).cleaning->barFraction, fraction) << progress;
    }
    purging.purgeProgress.reset();
    panel.importerChanged(purging);
    EXPECT_FALSE(panel.frame(now).cleaning);
}

TEST_F(PanelSessionTest, TheTitleTypesFromTheSessionsStart) {
    PanelSession panel(french, calendar, PanelOptions{}, now);
    EXPECT_EQ(panel.frame(now).title.text, "T_");
    // 500 ms in: six letters typed, the cursor in its hidden half.
    EXPECT_EQ(panel.frame(now.addingSeconds(0.5)).title.text, "TALLOW ");
    EXPECT_EQ(panel.nextFrameDate(now.addingSeconds(0.5)), now.addingSeconds(0.54));
}

TEST(TypewriterTitleTest, TypesPausesErasesThePhrasesAndRestsOnTheWordmark) {
    const auto timeline = typewriterTimeline();
    // A letter every 90 ms, a pause of 545 ms, a letter erased every 45 ms, 400 ms before the next phrase.
    const std::pair<double, const char*> texts[] = {{-1, ""},          {0, "T"},         {89, "T"},
                                                    {90, "TA"},        {1174, "TALLOWEN"}, {1175, "TALLOWE"},
                                                    {1490, ""},        {1890, "B"},      {1000000, "TALLOWEN"}};
    for (const auto& [milliseconds, text] : texts)
        EXPECT_EQ(typewriterTextAt(timeline, milliseconds), text) << milliseconds;
    for (const auto& [milliseconds, visible] : {std::pair{499, true}, {500, false}, {1000, true}})
        EXPECT_EQ(typewriterCursorVisibleAt(milliseconds), visible) << milliseconds;
}

TEST_F(PanelSessionTest, TheCounterAppearsThenClimbsAndMovesToEachNewValue) {
    // One measured day of 288,000 tokens: five tokens a second, a tick every 0.2 s.
    PanelSession panel = session();
    panel.samplesReloaded({today("claude-code", 288000)});
    PanelCounter counter = panel.frame(now).today.counter;
    EXPECT_EQ(counter.text, "288" NNBSP "000");
    EXPECT_FALSE(counter.animates);
    EXPECT_EQ(panel.nextFrameDate(now), now.addingSeconds(0.2));

    counter = panel.frame(now.addingSeconds(1)).today.counter;
    EXPECT_EQ(counter.text, "288" NNBSP "005");
    EXPECT_TRUE(counter.animates);
    EXPECT_DOUBLE_EQ(counter.transitionSeconds, 0.16);
    EXPECT_EQ(panel.frameAtRest(now.addingSeconds(1)).today.counter.text, "288" NNBSP "000");

    panel.samplesReloaded({today("claude-code", 2880000)});
    counter = panel.frame(now.addingSeconds(2)).today.counter;
    EXPECT_EQ(counter.number + "|" + *counter.unit, "2,880|M");
    EXPECT_TRUE(counter.animates);
    EXPECT_DOUBLE_EQ(counter.transitionSeconds, 1.2);

    // The day's first data replaces a zero without animation.
    PanelSession fresh = session();
    fresh.frame(now);
    fresh.samplesReloaded({today("codex", 500)});
    EXPECT_FALSE(fresh.frame(now.addingSeconds(1)).today.counter.animates);
}

TEST_F(PanelSessionTest, TextsThatFollowTheClockAreRecomputedOncePerSecondOrOnAnEvent) {
    UsageSample codex = SampleBuilder("2026-03-07", "codex").primaryQuota(85).secondaryQuota(12).updatedAt(now);
    codex.quotaPrimaryResetAt = now.addingSeconds(3600.5);
    codex.quotaPlan = "plus";
    PanelSession panel = session();
    panel.samplesReloaded({codex});
    const PanelQuotaBlock block = panel.frame(now).quotas->blocks.at(0);
    std::string shown = block.label + " " + block.plan.value_or("no plan");
    for (const PanelQuotaBar& bar : block.bars)
        shown += " | " + bar.title + " " + bar.percentText + " " + std::string(textRoleName(bar.role)) + " " +
                 bar.resetText.value_or("no reset");
    EXPECT_EQ(shown, "CODEX PLUS | 5H 85 % warning reset 1 h | 7J 12 % primary no reset");
    const auto reset = [&](Date at) { return panel.frame(at).quotas->blocks.at(0).bars.at(0).resetText; };
    EXPECT_EQ(reset(now.addingSeconds(0.9)), "reset 1 h");
    EXPECT_EQ(reset(now.addingSeconds(1)), "reset 59 min");
    panel.importerChanged(ImporterState{});
    EXPECT_EQ(panel.nextFrameDate(now.addingSeconds(1.1)), now.addingSeconds(1.1));
}

TEST(PanelFrameJsonTest, EveryKeyInOrderAbsentValuesAsNull) {
    PanelFrame frame;
    frame.cleaning = PanelCleaning{"NETTOYAGE DES MESURES", 0.37, "37 %", 0.37, "Une seule fois."};
    frame.today.counter = PanelCounter{"2,4 M", "2,4", std::string("M"), true, 0.28, 0.2};
    frame.today.level = BottleLevel::full;
    frame.today.bottleRows = {"0110"};
    frame.toolRows = {{UsageTool::cursor, "CURSOR", "8 · 206 k"}};
    frame.quotas = PanelQuotas{"QUOTAS", {{UsageTool::codex, "CODEX", std::nullopt, {{"5H", 130, 1, "100 %",
                                                                                      TextRole::warning, "reset 1 h"}}}}};
    frame.detectedTools = PanelDetectedTools{"OUTILS DÉTECTÉS", "Aucun", TextRole::dimmed};
    frame.cloudWarning = PanelCloudWarning{CloudWarningKind::stale, "Synchro \"iCloud\"", true, "RELANCER",
                                           TextRole::warning};
    frame.loginItem = PanelLoginItem{"Lancer au démarrage", false};
    frame.footer.importRole = TextRole::disabled;
    frame.nextFrameSeconds = 0.09;
    EXPECT_EQ(panelFrameJson(frame),
              R"({"cleaning":{"title":"NETTOYAGE DES MESURES","progress":0.37,"percentText":"37 %",)"
              R"("barFraction":0.37,"note":"Une seule fois."},"title":{"text":"","role":"primary"},)"
              R"("showsImportIndicator":false,"today":{"title":"","requestsText":"","requestsLabel":"",)"
              R"("tokensLabel":"","counter":{"text":"2,4 M","number":"2,4","unit":"M","animates":true,)"
              R"("transitionSeconds":0.28,"tickSeconds":0.2},"costText":"","waterTitle":"","waterText":"",)"
              R"("equivalentText":"","comparisonLine":"","level":3,"bottleRows":["0110"]},)"
              R"("toolRows":[{"tool":"cursor","label":"CURSOR","figuresText":"8 · 206 k"}],)"
              R"("week":{"title":"","line":""},"quotas":{"title":"QUOTAS","blocks":[{"tool":"codex",)"
              R"("label":"CODEX","plan":null,"bars":[{"title":"5H","fillFraction":1,"percentText":"100 %",)"
              R"("role":"warning","resetText":"reset 1 h"}]}]},"detectedTools":{"title":"OUTILS DÉTECTÉS",)"
              R"("text":"Aucun","role":"dimmed"},"errorLine":null,"cloudWarning":{"kind":"stale",)"
              R"("text":"Synchro \"iCloud\"","showsRelaunch":true,"relaunchLabel":"RELANCER","role":"warning"},)"
              R"("loginItem":{"label":"Lancer au démarrage","isOn":false},"updateButton":null,)"
              R"("footer":{"importLabel":"","importEnabled":true,"importRole":"disabled","syncLabel":"",)"
              R"("quitLabel":"","lastImportText":null,"syncStatusLine":null,"developmentBadge":null,)"
              R"("developmentBadgeHelp":""},"nextFrameSeconds":0.09})");
}

TEST(PanelLayoutTest, TheMostGenerousLayoutThatFitsTheTerminal) {
    // Heights with the content at hand: full 41 lines, compact with its bottle 21, without 17.
    const auto heightOf = [](PanelLayout layout) {
        return layout == PanelLayout::full ? 41 : layout == PanelLayout::compactWithBottle ? 21 : 17;
    };
    const std::tuple<std::optional<TerminalExtent>, PanelLayout, int> cases[] = {
        {std::nullopt, PanelLayout::full, 48},  // piped: the whole panel
        {TerminalExtent{48, 41}, PanelLayout::full, 48},
        {TerminalExtent{200, 40}, PanelLayout::compactWithBottle, 48},
        {TerminalExtent{47, 60}, PanelLayout::compactWithBottle, 47},  // too narrow for the full panel
        {TerminalExtent{80, 21}, PanelLayout::compactWithBottle, 48},
        {TerminalExtent{80, 20}, PanelLayout::compact, 48},
        {TerminalExtent{40, 5}, PanelLayout::compact, 40},  // the smallest one even when it does not fit
        {TerminalExtent{39, 80}, PanelLayout::tooNarrow, 39},
    };
    for (const auto& [terminal, expected, columns] : cases) {
        const PanelLayout layout = choosePanelLayout(terminal, heightOf);
        EXPECT_EQ(layout, expected) << (terminal ? terminal->columns : 0);
        EXPECT_EQ(panelColumns(layout, terminal), columns);
    }
}

TEST(PanelLayoutTest, CutToTheRowsKeepingTheTopAndTheKeys) {
    const std::vector<std::string> lines = {"title", "today", "water", "keys"};
    EXPECT_EQ(linesWithinRows(lines, 4, true), lines);
    EXPECT_EQ(linesWithinRows(lines, 3, true), (std::vector<std::string>{"title", "today", "keys"}));
    EXPECT_EQ(linesWithinRows(lines, 3, false), (std::vector<std::string>{"title", "today", "water"}));
    EXPECT_EQ(linesWithinRows(lines, 0, false), (std::vector<std::string>{"title"}));
}

TEST(PanelLayoutTest, HalvedBitmapsKeepOneCellOutlines) {
    EXPECT_EQ(halvedPixelRows({"0100", "0000", "0001", "0000", "11"}),
              (std::vector<std::string>{"10", "01", "1"}));
    EXPECT_TRUE(halvedPixelRows({}).empty());
}

}  // namespace
}  // namespace tallowen
