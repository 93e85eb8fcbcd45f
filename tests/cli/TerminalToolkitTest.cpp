#include "BigDigits.hpp"
#include "BottleArt.hpp"
#include "QuotaBarArt.hpp"
#include "TerminalStyle.hpp"
#include "TextWidth.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace tallowen::cli {
namespace {

using Lines = std::vector<std::string>;

TEST(TerminalStyleTest, ColoursOnlyOnATerminalWithoutNoColor) {
    EXPECT_EQ((std::vector<bool>{colorsWanted(true, std::nullopt), colorsWanted(true, std::string()),
                                 colorsWanted(true, std::string("1")), colorsWanted(false, std::nullopt)}),
              (std::vector<bool>{true, true, false, false}));
    EXPECT_EQ(TerminalStyle(false).paint(TextRole::warning, "80 %"), "80 %");
    EXPECT_EQ(TerminalStyle(true).paint(TextRole::warning, "80 %"), "\x1b[33m80 %\x1b[0m");
}

TEST(TextWidthTest, CountsColumnsNotBytesAndWrapsAtSpaces) {
    for (const auto& [text, columns] : {std::pair{"", 0}, {"AUJOURD'HUI · RECOURS RÉELS", 27},
                                        {"1\u202f234,50\u00a0$US", 12}, {"▗▄█░…≈", 6}, {"e\u0301", 1}, {"日本", 4},
                                        {"\xff", 1}, {"\x1b[33m80 %\x1b[0m", 4}})
        EXPECT_EQ(displayWidth(text), columns) << text;
    EXPECT_EQ((Lines{padRight("É", 3), padLeft("É", 3), padRight("ÉTÉ", 2), spread("IMPORTER", "QUITTER", 20),
                     spread("IMPORTER", "QUITTER", 10)}),
              (Lines{"É  ", "  É", "ÉTÉ", "IMPORTER     QUITTER", "IMPORTER QUITTER"}));
    for (const auto& [text, columns, kept] : {std::tuple{"ÉTÉ", 3, "ÉTÉ"}, {"ÉTÉS", 3, "ÉT…"}, {"日本語", 4, "日…"},
                                              {"PLUS", 0, ""}})
        EXPECT_EQ(truncatedToWidth(text, columns), kept) << text;
    EXPECT_EQ((std::vector<Lines>{wrapText("Aucun pour l'instant. Claude Code", 20), wrapText("ÉTÉ ÉTÉ", 7),
                                  wrapText("abcdéfgh", 3), wrapText("", 10)}),
              (std::vector<Lines>{{"Aucun pour", "l'instant. Claude", "Code"}, {"ÉTÉ ÉTÉ"}, {"abc", "déf", "gh"},
                                  {""}}));
}

TEST(TerminalArtTest, BigDigitsQuotaBarsAndBottleQuadrants) {
    EXPECT_EQ(bigDigitLines("07"), (Lines{"█▀█ ▀▀█", "█ █   █", "▀▀▀   ▀"}));
    EXPECT_EQ(bigDigitLines("1 %"), (Lines{"▄█      ▀ █", " █      ▄▀ ", "▀▀▀     ▀ ▀"}));
    EXPECT_TRUE(bigDigitLines("1,5").empty());
    for (const auto& [percent, bar] : {std::pair{50.0, "██░░"}, {130.0, "████"}, {-5.0, "░░░░"}})
        EXPECT_EQ(quotaBarArt(percent, 4), bar) << percent;
    EXPECT_EQ(quotaBarArt(79.6, 10), "████████░░");
    // Upper-left only, lower-right only, both upper, everything; short rows and a partial last line are empty cells.
    EXPECT_EQ(bottleArtLines({"10001111", "00000010", "00010011", "00010001"}), Lines{"▘▗▀█"});
    EXPECT_EQ(bottleArtLines({"11", "", "", "", "01"}), (Lines{"▀", "▝"}));
    EXPECT_TRUE(bottleArtLines({}).empty());
}

}  // namespace
}  // namespace tallowen::cli
