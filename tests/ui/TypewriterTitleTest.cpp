#include "ui/TypewriterTitle.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(TypewriterTitleTest, TypesPausesErasesAndRestsOnTheWordmark) {
    const auto timeline = typewriterTimeline();
    // The first phrase, typed from an empty title.
    ASSERT_GE(timeline.size(), 17u);
    EXPECT_EQ(timeline[0], (TypewriterFrame{0, "T"}));
    EXPECT_EQ(timeline[1], (TypewriterFrame{90, "TA"}));
    EXPECT_EQ(timeline[7], (TypewriterFrame{90, "TALLOWEN"}));
    // The pause, then erasing.
    EXPECT_EQ(timeline[8], (TypewriterFrame{545, "TALLOWE"}));
    EXPECT_EQ(timeline[9], (TypewriterFrame{45, "TALLOW"}));
    EXPECT_EQ(timeline[15], (TypewriterFrame{45, ""}));
    // The next phrase after 0.4 s.
    EXPECT_EQ(timeline[16], (TypewriterFrame{400, "B"}));

    // Four phrases typed and erased, then the wordmark once more.
    size_t characters = 0;
    for (const auto phrase : typewriterPhrases) characters += 2 * phrase.size();
    EXPECT_EQ(timeline.size(), characters + typewriterWordmark.size());
    EXPECT_EQ(timeline.back().text, "TALLOWEN");
}

TEST(TypewriterTitleTest, TextAtAnInstantAndTheBlinkingCursor) {
    const auto timeline = typewriterTimeline();
    EXPECT_EQ(typewriterTextAt(timeline, -1), "");
    EXPECT_EQ(typewriterTextAt(timeline, 0), "T");
    EXPECT_EQ(typewriterTextAt(timeline, 89), "T");
    EXPECT_EQ(typewriterTextAt(timeline, 90), "TA");
    EXPECT_EQ(typewriterTextAt(timeline, 630), "TALLOWEN");
    EXPECT_EQ(typewriterTextAt(timeline, 1174), "TALLOWEN");
    EXPECT_EQ(typewriterTextAt(timeline, 1175), "TALLOWE");
    EXPECT_EQ(typewriterTextAt(timeline, 1000000), "TALLOWEN");

    EXPECT_TRUE(typewriterCursorVisibleAt(0));
    EXPECT_TRUE(typewriterCursorVisibleAt(499));
    EXPECT_FALSE(typewriterCursorVisibleAt(500));
    EXPECT_TRUE(typewriterCursorVisibleAt(1000));
    EXPECT_EQ(typewriterShownText("TALL", true), "TALL_");
    EXPECT_EQ(typewriterShownText("TALL", false), "TALL ");
}

}  // namespace
}  // namespace tallowen
