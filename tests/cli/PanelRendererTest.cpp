#include "BigDigits.hpp"
#include "PanelRenderer.hpp"
#include "TextWidth.hpp"
#include "summary/BottleBitmaps.hpp"

#include <gtest/gtest.h>

namespace tallowen::cli {
namespace {

using Lines = std::vector<std::string>;
constexpr auto npos = std::string::npos;

size_t indexOf(const Lines& lines, std::string_view text, size_t from = 0) {
    for (size_t i = from; i < lines.size(); ++i)
        if (lines[i].find(text) != npos) return i;
    return npos;
}

// A frame with every section filled and long figures everywhere.
PanelFrame fullFrame() {
    PanelFrame frame;
    frame.title = {"BRAIN FIRST._", TextRole::primary};
    frame.showsImportIndicator = true;
    const BottleBitmap& bitmap = bottleBitmap(BottleLevel::overflow);
    frame.today = {"AUJOURD'HUI · RECOURS RÉELS", "1234", "RECOURS", "TOKENS", {"12345,7 M", "", {}, false, 0, 60},
                   "1\u202f234\u00a0$US au tarif API", "EAU · AUJOURD'HUI", "12\u202f345 L", "\u2248 206 douches",
                   "AU-DESSUS DE TA MOYENNE", BottleLevel::overflow, Lines(bitmap.begin(), bitmap.end())};
    frame.toolRows = {{UsageTool::claudeCode, "CLAUDE CODE", "1000 · 12345,7 M"},
                      {UsageTool::macPerplexity, "PERPLEXITY", "234 · 999 k"}};
    frame.week = {"CETTE SEMAINE", "123456 recours · 12345,7 M · 1\u202f234\u202f567\u00a0$US"};
    frame.quotas = PanelQuotas{"QUOTAS",
                               {{UsageTool::codex, "CODEX", std::string("ENTERPRISE TEAM UNLIMITED PRO MAX 2026 PLAN"),
                                 {{"5H", 130, 1, "100 %", TextRole::warning, std::string("reset 59 min")},
                                  {"7J", 12, 0.12, "12 %", TextRole::primary, std::nullopt}}}}};
    frame.detectedTools = {"OUTILS DÉTECTÉS", "CHATGPT · CLAUDE · CLAUDE CODE · CODEX · CURSOR · PERPLEXITY",
                           TextRole::primary};
    frame.errorLine = "Store illisible : la base de données est verrouillée depuis trop longtemps";
    frame.footer.importLabel = "IMPORT…";
    frame.footer.quitLabel = "QUITTER";
    frame.footer.lastImportText = "Import 23:59";
    return frame;
}

TEST(PanelRendererTest, FullPanelFitsFortyEightColumnsInTheMenuOrder) {
    for (const bool colors : {false, true})
        for (const std::string& line : renderPanel(fullFrame(), true, TerminalStyle(colors))) {
            EXPECT_LE(displayWidth(line), panelWidth) << line;
            EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
        }
    const Lines lines = renderPanel(fullFrame(), true, TerminalStyle(false));
    size_t at = 0;
    for (const char* shown : {"BRAIN FIRST._", "AUJOURD'HUI · RECOURS RÉELS", "12345,7 M TOKENS", "au tarif API",
                              "EAU · AUJOURD'HUI", "AU-DESSUS DE TA MOYENNE", "PERPLEXITY", "CETTE SEMAINE", "QUOTAS",
                              "CODEX ENTERPRISE TEAM UNLIMITED PRO MAX 2026 PL…", "reset 59 min", "OUTILS DÉTECTÉS",
                              "verrouillée", "[i] IMPORT…       Import 23:59       [q] QUITTER"})
        EXPECT_NE(at = indexOf(lines, shown, at), npos) << shown;
}

TEST(PanelRendererTest, CompactLayoutsKeepTheEssentialsWithinTheirColumns) {
    const PanelFrame frame = fullFrame();
    // The half-size bottle takes six lines and its texts beside it; without it
    // they take two lines, or three when they do not fit one.
    for (const auto& [columns, bottleLines] : {std::pair{40, 3u}, {47, 4u}}) {
        size_t withBottle = 0;
        for (const PanelLayout layout : {PanelLayout::compactWithBottle, PanelLayout::compact}) {
            const Lines lines = renderPanel(frame, true, TerminalStyle(false), layout, columns);
            for (const std::string& line : lines) {
                EXPECT_LE(displayWidth(line), columns) << line;
                EXPECT_EQ(line.find("─"), npos) << line;
            }
            for (const char* kept : {"BRAIN FIRST._", "1234 RECOURS · 12345,7 M TOKENS", "au tarif API", "12\u202f345 L",
                                     "AU-DESSUS DE TA MOYENNE", "PERPLEXITY", "reset 59 min", "verrouillée", "[q] QUITTER"})
                EXPECT_NE(indexOf(lines, kept), npos) << kept;
            if (layout == PanelLayout::compactWithBottle) withBottle = lines.size();
            else EXPECT_EQ(lines.size() + bottleLines, withBottle);
        }
    }
}

TEST(PanelRendererTest, CleaningViewReplacesThePanel) {
    PanelFrame frame = fullFrame();
    frame.cleaning = PanelCleaning{"NETTOYAGE DES MESURES", 0.37, "37 %", 0.37,
                                   "Une seule fois. Les doublons partent, tes chiffres restent."};
    const Lines lines = renderPanel(frame, false, TerminalStyle(false));
    EXPECT_EQ(indexOf(lines, "AUJOURD'HUI"), npos);
    for (const std::string& shown : {std::string("NETTOYAGE DES MESURES"), bigDigitLines("37 %")[0],
                                     std::string("Une seule fois. Les doublons partent, tes")})
        EXPECT_NE(indexOf(lines, shown), npos) << shown;
    const size_t bar = indexOf(lines, "░");
    ASSERT_NE(bar, npos);
    EXPECT_EQ(displayWidth(lines[bar].substr(0, lines[bar].find("░"))), 18);  // 37 % of 48 columns, filled
    for (const std::string& line : lines) EXPECT_LE(displayWidth(line), panelWidth) << line;
}

}  // namespace
}  // namespace tallowen::cli
