#include "ui/CountingText.hpp"

#include "base/CheckedMath.hpp"
#include "ui/MenuFormats.hpp"

#include <algorithm>
#include <cmath>

namespace tallowen {
namespace {

constexpr int64_t millionTokens = 1000000;

// The byte length of a Unicode whitespace at `at` in UTF-8 text, or 0.
size_t whitespaceLength(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(at);
    if (first == ' ' || (first >= '\t' && first <= '\r')) return 1;
    if (first == 0xC2 && (byte(at + 1) == 0xA0 || byte(at + 1) == 0x85)) return 2;
    if (first == 0xE2 && byte(at + 1) == 0x80) {
        const unsigned third = byte(at + 2);
        if ((third >= 0x80 && third <= 0x8A) || third == 0xA8 || third == 0xA9 || third == 0xAF) return 3;
    }
    if (first == 0xE2 && byte(at + 1) == 0x81 && byte(at + 2) == 0x9F) return 3;
    if (first == 0xE3 && byte(at + 1) == 0x80 && byte(at + 2) == 0x80) return 3;
    return 0;
}

}  // namespace

void CountingAnchor::appear(int64_t currentValue, Date now) {
    if (initialised) return;
    initialised = true;
    value = static_cast<double>(currentValue);
    date = now;
}

bool CountingAnchor::valueChanged(int64_t newValue, Date now) {
    const bool animated = value != 0;
    value = static_cast<double>(newValue);
    date = now;
    return animated;
}

int64_t CountingText::step() const {
    const int64_t floorStep = value < millionTokens ? 1 : 1000;
    if (!(ratePerSecond >= 1)) return floorStep;
    // 10^18 is the largest power of ten a signed 64-bit integer holds.
    const int exponent = std::min(18, static_cast<int>(std::floor(std::log10(ratePerSecond))));
    int64_t power = 1;
    for (int i = 0; i < exponent; ++i) power *= 10;
    return std::max(power, floorStep);
}

double CountingText::tickIntervalSeconds() const {
    if (!(ratePerSecond > 0)) return 60;
    return std::max(static_cast<double>(step()) / ratePerSecond, 0.1);
}

double CountingText::transitionSeconds() const { return std::min(0.8 * tickIntervalSeconds(), 0.28); }

double CountingText::rawValueAt(const CountingAnchor& anchor, Date date) const {
    return anchor.value + std::max(date.secondsSince(anchor.date), 0.0) * ratePerSecond;
}

int64_t CountingText::shownValueAt(const CountingAnchor& anchor, Date date) const {
    const double raw = rawValueAt(anchor, date);
    if (!(ratePerSecond > 0)) return roundedToInt64(raw);
    const auto s = static_cast<double>(step());
    return roundedToInt64(std::trunc(raw / s) * s);
}

std::string CountingText::textAt(const CountingAnchor& anchor, Date date, const LocaleFormatter& locale) const {
    const int64_t shown = shownValueAt(anchor, date);
    if (ratePerSecond > 0) return countingStepText(shown, step(), locale);
    return format ? format(shown) : std::to_string(shown);
}

std::string countingStepText(int64_t n, int64_t step, const LocaleFormatter& locale) {
    if (n >= millionTokens) {
        const int decimals = step <= 1000 ? 3 : (step == 10000 ? 2 : 1);
        return fixedWithSeparator(static_cast<double>(n) / 1000000.0, decimals, locale.decimalSeparator()) + " M";
    }
    if (step <= 10) return locale.groupedInteger(n);
    if (step == 100) return fixedWithSeparator(static_cast<double>(n) / 1000.0, 1, locale.decimalSeparator()) + " k";
    return std::to_string(n / 1000) + " k";
}

std::optional<CountingTextParts> splitForRendering(std::string_view text) {
    std::optional<CountingTextParts> parts;
    for (size_t at = 0; at < text.size();) {
        const size_t length = whitespaceLength(text, at);
        if (length == 0) {
            ++at;
            continue;
        }
        const size_t next = at + length;
        const bool followedByDigit = next < text.size() && text[next] >= '0' && text[next] <= '9';
        if (!followedByDigit) parts = CountingTextParts{std::string(text.substr(0, at)), std::string(text.substr(next))};
        at = next;
    }
    return parts;
}

}  // namespace tallowen
