#include "ui/PanelLayout.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(PanelLayoutTest, TheMostGenerousLayoutThatFitsTheTerminal) {
    // Heights with the content at hand: full 41 lines, compact with its bottle 21, without 17.
    const auto heightOf = [](PanelLayout layout) {
        return layout == PanelLayout::full ? 41 : layout == PanelLayout::compactWithBottle ? 21 : 17;
    };
    const struct {
        std::optional<TerminalExtent> terminal;
        PanelLayout layout;
        int columns;
    } cases[] = {
        {std::nullopt, PanelLayout::full, 48},  // piped: the whole panel
        {TerminalExtent{48, 41}, PanelLayout::full, 48},
        {TerminalExtent{200, 40}, PanelLayout::compactWithBottle, 48},
        {TerminalExtent{80, 24}, PanelLayout::compactWithBottle, 48},
        {TerminalExtent{47, 60}, PanelLayout::compactWithBottle, 47},  // too narrow for the full panel
        {TerminalExtent{80, 20}, PanelLayout::compact, 48},
        {TerminalExtent{40, 5}, PanelLayout::compact, 40},  // the smallest one even when it does not fit
        {TerminalExtent{39, 80}, PanelLayout::tooNarrow, 39},
    };
    for (const auto& c : cases) {
        const PanelLayout layout = choosePanelLayout(c.terminal, heightOf);
        EXPECT_EQ(layout, c.layout) << (c.terminal ? c.terminal->columns : 0);
        EXPECT_EQ(panelColumns(layout, c.terminal), c.columns);
    }
    EXPECT_EQ(terminalTooNarrowText(39), "Terminal too narrow: 39 columns, the panel needs 40.");
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
