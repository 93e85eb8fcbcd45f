#include "ui/TypewriterTitle.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(TypewriterTitleTest, TypesPausesErasesTheFourPhrasesAndRestsOnTheWordmark) {
    const auto timeline = typewriterTimeline();
    size_t characters = 0;
    for (const auto phrase : typewriterPhrases) characters += 2 * phrase.size();
    EXPECT_EQ(timeline.size(), characters + typewriterWordmark.size());
    // A letter every 90 ms, a pause of 545 ms, a letter erased every 45 ms, 400 ms before the next phrase.
    const std::pair<double, const char*> texts[] = {{-1, ""},          {0, "T"},         {89, "T"},
                                                    {90, "TA"},        {1174, "TALLOWEN"}, {1175, "TALLOWE"},
                                                    {1490, ""},        {1890, "B"},      {1000000, "TALLOWEN"}};
    for (const auto& [milliseconds, text] : texts)
        EXPECT_EQ(typewriterTextAt(timeline, milliseconds), text) << milliseconds;

    EXPECT_TRUE(typewriterCursorVisibleAt(499));
    EXPECT_FALSE(typewriterCursorVisibleAt(500));
    EXPECT_TRUE(typewriterCursorVisibleAt(1000));
    EXPECT_EQ(typewriterShownText("TALL", true) + typewriterShownText("TALL", false), "TALL_TALL ");
}

}  // namespace
}  // namespace tallowen
