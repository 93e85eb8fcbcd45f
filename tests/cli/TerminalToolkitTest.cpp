#include "BottleArt.hpp"
#include "QuotaBarArt.hpp"
#include "TerminalStyle.hpp"
#include "TextWidth.hpp"

#include <gtest/gtest.h>

namespace tallowen::cli {
namespace {

TEST(TerminalStyleTest, ColoursOnlyOnATerminalWithoutNoColor) {
    EXPECT_TRUE(colorsWanted(true, std::nullopt));
    EXPECT_TRUE(colorsWanted(true, std::string()));
    EXPECT_FALSE(colorsWanted(true, std::string("1")));
    EXPECT_FALSE(colorsWanted(false, std::nullopt));

    EXPECT_EQ(TerminalStyle(false).paint(TextRole::warning, "80 %"), "80 %");
    const std::string painted = TerminalStyle(true).paint(TextRole::warning, "80 %");
    EXPECT_EQ(painted, "\x1b[33m80 %\x1b[0m");
    EXPECT_NE(TerminalStyle(true).paint(TextRole::primary, "x"), TerminalStyle(true).paint(TextRole::accent, "x"));
    EXPECT_EQ(displayWidth(painted), 4);
}

TEST(TextWidthTest, CountsColumnsNotBytes) {
    EXPECT_EQ(displayWidth(""), 0);
    EXPECT_EQ(displayWidth("AUJOURD'HUI · RECOURS RÉELS"), 27);
    EXPECT_EQ(displayWidth("1\u202f234,50\u00a0$US"), 12);
    EXPECT_EQ(displayWidth("▗▄█░…≈"), 6);
    EXPECT_EQ(displayWidth("e\u0301"), 1);
    EXPECT_EQ(displayWidth("日本"), 4);
    EXPECT_EQ(displayWidth("\xff"), 1);

    EXPECT_EQ(padRight("É", 3), "É  ");
    EXPECT_EQ(padLeft("É", 3), "  É");
    EXPECT_EQ(padRight("ÉTÉ", 2), "ÉTÉ");
    EXPECT_EQ(spread("IMPORTER", "QUITTER", 20), "IMPORTER     QUITTER");
    EXPECT_EQ(spread("IMPORTER", "QUITTER", 10), "IMPORTER QUITTER");

    EXPECT_EQ(truncatedToWidth("ÉTÉ", 3), "ÉTÉ");
    EXPECT_EQ(truncatedToWidth("ÉTÉS", 3), "ÉT…");
    EXPECT_EQ(truncatedToWidth("日本語", 4), "日…");
    EXPECT_EQ(truncatedToWidth("PLUS", 0), "");
}

TEST(TextWidthTest, WrapsAtSpacesWithinTheWidth) {
    EXPECT_EQ(wrapText("Aucun pour l'instant. Claude Code", 20),
              (std::vector<std::string>{"Aucun pour", "l'instant. Claude", "Code"}));
    EXPECT_EQ(wrapText("ÉTÉ ÉTÉ", 7), std::vector<std::string>{"ÉTÉ ÉTÉ"});
    EXPECT_EQ(wrapText("abcdéfgh", 3), (std::vector<std::string>{"abc", "déf", "gh"}));
    EXPECT_EQ(wrapText("", 10), std::vector<std::string>{""});
}

TEST(BottleArtTest, EachQuadrantIsOneColumnOfTwoCells) {
    // Upper-left only, lower-right only, both upper, everything.
    const std::vector<std::string> rows = {
        "10001111",
        "00000010",
        "00010011",
        "00010001",
    };
    EXPECT_EQ(bottleArtLines(rows), std::vector<std::string>{"▘▗▀█"});
    // Short rows and a partial last line are read as empty cells.
    EXPECT_EQ(bottleArtLines({"11", "", "", "", "01"}), (std::vector<std::string>{"▀", "▝"}));
    EXPECT_TRUE(bottleArtLines({}).empty());
}

TEST(QuotaBarArtTest, FilledPartFollowsTheClampedPercent) {
    EXPECT_EQ(quotaBarArt(50, 4), "██░░");
    EXPECT_EQ(quotaBarArt(130, 4), "████");
    EXPECT_EQ(quotaBarArt(-5, 4), "░░░░");
    EXPECT_EQ(quotaBarArt(79.6, 10), "████████░░");
    EXPECT_EQ(displayWidth(quotaBarArt(33, 18)), 18);
}

}  // namespace
}  // namespace tallowen::cli
