#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/PanelSession.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tallowen {
namespace {

using testing::localDate;
using testing::SampleBuilder;

#define NNBSP "\u202f"

class PanelSessionTest : public ::testing::Test {
protected:
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
    // Saturday 7 March 2026, 14:05 in Paris.
    Date now = localDate(2026, 3, 7, 14, 5);
};

TEST_F(PanelSessionTest, AnEmptyStoreGivesTheEmptyPanelAndOnlyTheOfferedCommands) {
    PanelSession terminal = session();
    terminal.importerChanged(ImporterState{});
    const PanelFrame frame = terminal.frame(now);
    EXPECT_EQ(frame.today.counter.text, "0");
    EXPECT_EQ(frame.today.bottleRows.size(), 44u);
    EXPECT_EQ(frame.detectedTools.role, TextRole::dimmed);
    EXPECT_EQ(frame.footer.importRole, TextRole::primary);
    EXPECT_FALSE(frame.cleaning || frame.quotas || frame.cloudWarning || frame.loginItem || frame.updateButton ||
                 frame.footer.syncStatusLine);

    PanelSession mac = session(PanelOptions{true, true, true});
    mac.loginItemChanged(true);
    const PanelFrame full = mac.frame(now);
    ASSERT_TRUE(full.cloudWarning && full.loginItem && full.updateButton);
    EXPECT_EQ(full.cloudWarning->kind, CloudWarningKind::never);
    EXPECT_TRUE(full.cloudWarning->showsRelaunch && full.loginItem->isOn);
    EXPECT_EQ(full.footer.syncStatusLine, "iCloud · jamais connecté");
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
    EXPECT_EQ(importing.detectedTools.role, TextRole::dimmed);
    EXPECT_TRUE(importing.showsImportIndicator);
    EXPECT_EQ(importing.footer.importLabel, "IMPORT…");
    EXPECT_FALSE(importing.footer.importEnabled);
    EXPECT_EQ(importing.footer.importRole, TextRole::disabled);
}

TEST_F(PanelSessionTest, AStoreFailureStandsInForTheLastErrorUntilTheStoreIsReadAgain) {
    PanelSession panel = session();
    panel.storeFailed("Store illisible : disque plein");
    EXPECT_EQ(panel.frame(now).errorLine, "Store illisible : disque plein");
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
    EXPECT_EQ(frame.cleaning->title, "NETTOYAGE DES MESURES");
    EXPECT_EQ(frame.cleaning->note, "Une seule fois. Les doublons partent, tes chiffres restent.");
    EXPECT_FALSE(frame.showsImportIndicator);
    // The percent rounds half up; the bar stops at its ends.
    const struct {
        double progress;
        const char* text;
        double fraction;
    } cases[] = {{0.004, "0 %", 0.004}, {0.005, "1 %", 0.005}, {1.234, "123 %", 1}, {-0.2, "-20 %", 0},
                 {std::numeric_limits<double>::quiet_NaN(), "0 %", 0}};
    for (const auto& c : cases) {
        purging.purgeProgress = c.progress;
        panel.importerChanged(purging);
        EXPECT_EQ(panel.frame(now).cleaning->percentText, c.text) << c.progress;
        EXPECT_DOUBLE_EQ(panel.frame(now).cleaning->barFraction, c.fraction) << c.progress;
    }
    purging.purgeProgress.reset();
    panel.importerChanged(purging);
    EXPECT_FALSE(panel.frame(now).cleaning);
}

TEST_F(PanelSessionTest, TheTitleTypesFromTheStartAndRestsOnTheWordmark) {
    PanelSession panel(french, calendar, PanelOptions{}, now);
    EXPECT_EQ(panel.frame(now).title.text, "T_");
    // 500 ms in: six letters typed, the cursor in its hidden half.
    EXPECT_EQ(panel.frame(now.addingSeconds(0.5)).title.text, "TALLOW ");
    EXPECT_EQ(panel.nextFrameDate(now.addingSeconds(0.5)), now.addingSeconds(0.54));
    EXPECT_EQ(panel.frameAtRest(now).title.text, "TALLOWEN_");
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
    UsageSample codex = today("codex", 10);
    codex.quotaPrimaryPercent = 85;
    codex.quotaPrimaryResetAt = now.addingSeconds(3600.5);
    PanelSession panel = session();
    panel.samplesReloaded({codex});
    const auto reset = [&](Date at) { return panel.frame(at).quotas->blocks.at(0).bars.at(0).resetText; };
    EXPECT_EQ(reset(now), "reset 1 h");
    EXPECT_EQ(panel.frame(now).quotas->blocks[0].bars[0].role, TextRole::warning);
    EXPECT_EQ(reset(now.addingSeconds(0.9)), "reset 1 h");
    EXPECT_EQ(reset(now.addingSeconds(1)), "reset 59 min");
    panel.importerChanged(ImporterState{});
    EXPECT_EQ(panel.nextFrameDate(now.addingSeconds(1.1)), now.addingSeconds(1.1));
}

TEST(PanelFrameJsonTest, EveryKeyInOrderAbsentValuesAsNull) {
    PanelFrame frame;
    frame.cleaning = PanelCleaning{"NETTOYAGE DES MESURES", 0.37, "37 %", 0.37, "Une seule fois."};
    frame.title = RoledText{"TALLOW_", TextRole::primary};
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
              R"("barFraction":0.37,"note":"Une seule fois."},"title":{"text":"TALLOW_","role":"primary"},)"
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

}  // namespace
}  // namespace tallowen
