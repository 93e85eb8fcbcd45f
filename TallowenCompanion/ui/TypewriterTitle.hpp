#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

inline constexpr std::string_view typewriterWordmark = "TALLOWEN";
inline constexpr std::array<std::string_view, 4> typewriterPhrases = {"TALLOWEN", "BRAIN FIRST.", "AI SECOND.",
                                                                       "MORE YOU."};

inline constexpr int64_t typewriterTypingMilliseconds = 90;
inline constexpr int64_t typewriterPauseMilliseconds = 500;
inline constexpr int64_t typewriterErasingMilliseconds = 45;
inline constexpr int64_t typewriterNextPhraseMilliseconds = 400;
// The cursor shows for half of this period and hides for the other half.
inline constexpr int64_t typewriterCursorBlinkMilliseconds = 1000;

// One step of the title's animation: after waiting `delayMilliseconds` from the
// previous step, the typed text becomes `text`.
struct TypewriterFrame {
    int64_t delayMilliseconds = 0;
    std::string text;

    friend bool operator==(const TypewriterFrame&, const TypewriterFrame&) = default;
};

// The whole animation from an empty title: each phrase typed one character
// every 90 ms, a 500 ms pause once complete, erased one character every 45 ms,
// the next phrase 400 ms after the title is empty. After the taglines the
// wordmark is typed once more and the title rests on it: a menu opened many
// times a day should settle rather than loop.
std::vector<TypewriterFrame> typewriterTimeline();

// Total length of the timeline, in milliseconds.
int64_t typewriterDurationMilliseconds(const std::vector<TypewriterFrame>& timeline);

// The typed text `elapsedMilliseconds` after the animation started.
std::string typewriterTextAt(const std::vector<TypewriterFrame>& timeline, int64_t elapsedMilliseconds);

bool typewriterCursorVisibleAt(int64_t elapsedMilliseconds);

// The text followed by "_" while the cursor shows, or by a space, so the width never changes.
std::string typewriterShownText(std::string_view typed, bool cursorVisible);

}  // namespace tallowen
