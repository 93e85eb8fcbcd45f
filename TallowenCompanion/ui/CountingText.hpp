#pragma once

#include "model/Date.hpp"
#include "ui/LocaleFormatter.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tallowen {

// Where the simulated count starts from: the value it held and when.
struct CountingAnchor {
    double value = 0;
    Date date;
    bool initialised = false;

    // First appearance: anchor on the true value, once.
    void appear(int64_t currentValue, Date now);
    // The true value changed (an import landed). Returns whether the move to the
    // new anchor is animated: a counter that stood at 0 (the day's first data)
    // jumps without animation.
    bool valueChanged(int64_t newValue, Date now);
};

// A number that keeps climbing between imports at the user's usual pace.
struct CountingText {
    int64_t value = 0;
    // Used when the counter does not run (rate 0 or less).
    std::function<std::string(int64_t)> format;
    double ratePerSecond = 0;

    // The granularity of the shown number: a power of ten near the rate, at
    // least 1000 once the value reaches a million.
    int64_t step() const;
    // How often the shown number changes: 60 s when the counter is stopped.
    double tickIntervalSeconds() const;
    // The numeric transition's length for one tick.
    double transitionSeconds() const;

    double rawValueAt(const CountingAnchor& anchor, Date date) const;
    int64_t shownValueAt(const CountingAnchor& anchor, Date date) const;
    std::string textAt(const CountingAnchor& anchor, Date date, const LocaleFormatter& locale) const;
};

inline constexpr double countingValueChangeAnimationSeconds = 1.2;
inline constexpr double countingSmallPartScale = 0.55;

// A running counter's text for `n` at step `step`: "2.400 M", "1,200", "12.3 k", "12 k".
std::string countingStepText(int64_t n, int64_t step, const LocaleFormatter& locale);

// The counter's text split for two sizes: the number before the last whitespace
// that is followed by something other than a digit, and the unit after it (the
// whitespace itself is dropped). Nothing when there is no such whitespace, so
// the digit groups of "1 200" are never split.
struct CountingTextParts {
    std::string number;
    std::string unit;
};
std::optional<CountingTextParts> splitForRendering(std::string_view text);

}  // namespace tallowen
