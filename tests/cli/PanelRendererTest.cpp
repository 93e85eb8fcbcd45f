#include "BigDigits.hpp"
#include "BottleArt.hpp"
#include "PanelRenderer.hpp"
#include "TextWidth.hpp"
#include "summary/BottleBitmaps.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tallowen::cli {
namespace {

size_t indexOf(const std::vector<std::string>& lines, std::string_view text, size_t from = 0) {
    for (size_t i = from; i < lines.size(); ++i)
        if (lines[i].find(text) != std::string::npos) return i;
    return std::string::npos;
}

int countOf(const std::vector<std::string>& lines, std::string_view text) {
    int count = 0;
    for (const std::string& line : lines)
        for (size_t at = line.find(text); at != std::string::npos; at = line.find(text, at + text.size())) ++count;
    return count;
}

// A frame with every section filled and long figures everywhere.
PanelFrame fullFrame() {
    PanelFrame frame;
    frame.title = {"BRAIN FIRST._", TextRole::primary};
    frame.showsImportIndicator = true;
    PanelToday& today = frame.today;
    today.title = "AUJOURD'HUI · RECOURS RÉELS";
    today.requestsText = "1234";
    today.requestsLabel = "RECOURS";
    today.tokensLabel = "TOKENS";
    today.counter.text = "12345,7 M";
    today.costText = "1\u202f234\u00a0$US au tarif API";
    today.waterTitle = "EAU · AUJOURD'HUI";
    today.waterText = "12\u202f345 L";
    today.equivalentText = "\u2248 206 douches";
    today.comparisonLine = "AU-DESSUS DE TA MOYENNE";
    const BottleBitmap& bitmap = bottleBitmap(BottleLevel::overflow);
    today.bottleRows.assign(bitmap.begin(), bitmap.end());
    frame.toolRows = {{UsageTool::claudeCode, "CLAUDE CODE", "1000 · 12345,7 M"},
                      {UsageTool::macPerplexity, "PERPLEXITY", "234 · 999 k"}};
    frame.week = {"CETTE SEMAINE", "123456 recours · 12345,7 M · 1\u202f234\u202f567\u00a0$US"};
    frame.quotas = PanelQuotas{"QUOTAS",
                               {{UsageTool::codex,
                                 "CODEX",
                                 std::string("ENTERPRISE TEAM UNLIMITED PRO MAX 2026 PLAN"),
                                 {{"5H", 130, 1, "100 %", TextRole::warning, std::string("reset 59 min")},
                                  {"7J", 12, 0.12, "12 %", TextRole::primary, std::nullopt}}}}};
    frame.detectedTools = {"OUTILS DÉTECTÉS", "CHATGPT · CLAUDE · CLAUDE CODE · CODEX · CURSOR · PERPLEXITY",
                           TextRole::primary};
    frame.errorLine = "Store illisible : la base de données est verrouillée depuis trop longtemps";
    frame.footer.importLabel = "IMPORT…";
    frame.footer.importRole = TextRole::disabled;
    frame.footer.quitLabel = "QUITTER";
    frame.footer.lastImportText = "Import 23:59";
    return frame;
}

TEST(PanelRendererTest, FullPanelFitsFortyEightColumnsInTheMenuOrder) {
    for (const bool colors : {false, true}) {
        const TerminalStyle style(colors);
        const auto lines = renderPanel(fullFrame(), true, style);
        for (const std::string& line : lines) {
            EXPECT_LE(displayWidth(line), panelWidth) << line;
            EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
        }
        EXPECT_EQ(colors, countOf(lines, "\x1b[") > 0);

        const size_t title = indexOf(lines, "BRAIN FIRST._");
        const size_t today = indexOf(lines, "AUJOURD'HUI · RECOURS RÉELS");
        const size_t tokens = indexOf(lines, "TOKENS");
        const size_t cost = indexOf(lines, "au tarif API");
        const size_t water = indexOf(lines, "EAU · AUJOURD'HUI");
        const size_t comparison = indexOf(lines, "AU-DESSUS DE TA MOYENNE");
        const size_t tools = indexOf(lines, "PERPLEXITY");
        const size_t week = indexOf(lines, "CETTE SEMAINE");
        const size_t quotas = indexOf(lines, "QUOTAS");
        const size_t bar = indexOf(lines, "reset 59 min");
        const size_t detected = indexOf(lines, "OUTILS DÉTECTÉS");
        const size_t keys = indexOf(lines, "QUITTER");
        const std::vector<size_t> order = {title, today, tokens, cost, water, comparison, tools,
                                           week, quotas, bar, detected, keys};
        for (const size_t at : order) EXPECT_NE(at, std::string::npos);
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
        EXPECT_NE(indexOf(lines, "12345,7 M"), std::string::npos);
        EXPECT_NE(indexOf(lines, "IMPORT…"), std::string::npos);
        EXPECT_NE(indexOf(lines, "Import 23:59"), std::string::npos);
        EXPECT_NE(indexOf(lines, "verrouillée"), std::string::npos);
        if (!colors) {
            EXPECT_NE(indexOf(lines, "CODEX ENTERPRISE TEAM UNLIMITED PRO MAX 2026 PL…"), std::string::npos);
        }
    }
}

TEST(PanelRendererTest, CleaningViewReplacesThePanel) {
    PanelFrame frame = fullFrame();
    frame.cleaning = PanelCleaning{"NETTOYAGE DES MESURES", 0.37, "37 %", 0.37,
                                   "Une seule fois. Les doublons partent, tes chiffres restent."};
    const auto lines = renderPanel(frame, false, TerminalStyle(false));
    EXPECT_EQ(indexOf(lines, "AUJOURD'HUI"), std::string::npos);
    EXPECT_NE(indexOf(lines, "NETTOYAGE DES MESURES"), std::string::npos);
    EXPECT_NE(indexOf(lines, bigDigitLines("37 %")[0]), std::string::npos);
    EXPECT_NE(indexOf(lines, "Une seule fois. Les doublons partent, tes"), std::string::npos);
    const size_t bar = indexOf(lines, "█");
    ASSERT_NE(bar, std::string::npos);
    EXPECT_EQ(countOf({lines.back()}, "█"), 0);
    int filled = 0;
    for (const std::string& line : lines)
        if (line.find("░") != std::string::npos) filled = countOf({line}, "█");
    EXPECT_EQ(filled, 18);  // 37 % of 48 columns
    for (const std::string& line : lines) EXPECT_LE(displayWidth(line), panelWidth) << line;
}

TEST(BottleArtTest, TheFiveLevelsAreToldApart) {
    std::vector<std::vector<std::string>> arts;
    for (const BottleLevel level : allBottleLevels) {
        const BottleBitmap& bitmap = bottleBitmap(level);
        arts.push_back(bottleArtLines(std::vector<std::string>(bitmap.begin(), bitmap.end())));
    }
    std::vector<int> fullBlocks;
    for (const auto& art : arts) {
        ASSERT_EQ(art.size(), 11u);
        for (const std::string& line : art) EXPECT_EQ(displayWidth(line), 12);
        fullBlocks.push_back(countOf(art, "█"));
    }
    // More water, more solid blocks: every level has visibly more than the one below.
    for (size_t i = 1; i < fullBlocks.size(); ++i) EXPECT_GE(fullBlocks[i], fullBlocks[i - 1] + 5) << i;
    EXPECT_EQ(fullBlocks.front(), 0);
    // Only the overflowing bottle has its puddle on the last line and a filled neck.
    for (size_t i = 0; i < arts.size(); ++i) {
        EXPECT_EQ(countOf({arts[i].back()}, "█") > 0, i == 4) << i;
        EXPECT_EQ(countOf({arts[i][1]}, "█") > 0, i == 4) << i;
    }
}

TEST(BigDigitsTest, DigitsArePixelGlyphsThreeLinesHigh) {
    EXPECT_EQ(bigDigitLines("07"), (std::vector<std::string>{"█▀█ ▀▀█", "█ █   █", "▀▀▀   ▀"}));
    EXPECT_EQ(bigDigitLines("1 %"), (std::vector<std::string>{"▄█      ▀ █", " █      ▄▀ ", "▀▀▀     ▀ ▀"}));
    EXPECT_TRUE(bigDigitLines("1,5").empty());
}

}  // namespace
}  // namespace tallowen::cli
