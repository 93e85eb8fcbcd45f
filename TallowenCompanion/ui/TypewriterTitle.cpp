#include "ui/TypewriterTitle.hpp"

namespace tallowen {
namespace {

void typeAndErase(std::vector<TypewriterFrame>& frames, std::string_view phrase, int64_t firstDelay) {
    for (size_t k = 1; k <= phrase.size(); ++k)
        frames.push_back({k == 1 ? firstDelay : typewriterTypingMilliseconds, std::string(phrase.substr(0, k))});
    for (size_t k = phrase.size(); k-- > 0;) {
        const int64_t delay = k + 1 == phrase.size() ? typewriterPauseMilliseconds + typewriterErasingMilliseconds
                                                    : typewriterErasingMilliseconds;
        frames.push_back({delay, std::string(phrase.substr(0, k))});
    }
}

}  // namespace

std::vector<TypewriterFrame> typewriterTimeline() {
    std::vector<TypewriterFrame> frames;
    int64_t firstDelay = 0;
    for (const std::string_view phrase : typewriterPhrases) {
        typeAndErase(frames, phrase, firstDelay);
        firstDelay = typewriterNextPhraseMilliseconds;
    }
    for (size_t k = 1; k <= typewriterWordmark.size(); ++k)
        frames.push_back({k == 1 ? firstDelay : typewriterTypingMilliseconds,
                          std::string(typewriterWordmark.substr(0, k))});
    return frames;
}

int64_t typewriterDurationMilliseconds(const std::vector<TypewriterFrame>& timeline) {
    int64_t total = 0;
    for (const TypewriterFrame& frame : timeline) total += frame.delayMilliseconds;
    return total;
}

std::string typewriterTextAt(const std::vector<TypewriterFrame>& timeline, int64_t elapsedMilliseconds) {
    std::string text;
    int64_t at = 0;
    for (const TypewriterFrame& frame : timeline) {
        at += frame.delayMilliseconds;
        if (at > elapsedMilliseconds) break;
        text = frame.text;
    }
    return text;
}

bool typewriterCursorVisibleAt(int64_t elapsedMilliseconds) {
    if (elapsedMilliseconds < 0) return true;
    return elapsedMilliseconds % typewriterCursorBlinkMilliseconds < typewriterCursorBlinkMilliseconds / 2;
}

std::string typewriterShownText(std::string_view typed, bool cursorVisible) {
    std::string shown(typed);
    shown += cursorVisible ? '_' : ' ';
    return shown;
}

}  // namespace tallowen
