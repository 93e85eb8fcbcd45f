#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <string>

namespace tallowen {

// Numbers, money, relative times and upper case as the user's locale writes
// them. The engine decides every text and hands only these pieces to the
// platform: the terminal formats with ICU, the Mac app with Foundation's
// formatters so that it follows the user's own regional settings.
class LocaleFormatter {
public:
    virtual ~LocaleFormatter() = default;

    // "," in French, "." in English.
    virtual std::string decimalSeparator() const = 0;
    // Exactly `fractionDigits` fraction digits, with the locale's grouping.
    virtual std::string decimal(double value, int fractionDigits) const = 0;
    // With the locale's digit grouping: "1,234" in English, "1 234" (U+202F) in French.
    virtual std::string groupedInteger(int64_t value) const = 0;
    // An amount in US dollars ("USD") with exactly `fractionDigits` fraction digits.
    virtual std::string usDollars(double dollars, int fractionDigits) const = 0;
    // How long ago, in named, wide units: "il y a 3 heures", "hier", "3 hours
    // ago", "yesterday". The largest unit that holds the interval at least
    // once is used, truncated.
    virtual std::string timeAgo(double elapsedSeconds) const = 0;
    // The local time of day of `date` (process time zone) in the locale's short style.
    virtual std::string shortTime(Date date) const = 0;
    // The text in upper case by the language-neutral rules ("été" gives "ÉTÉ").
    virtual std::string upperCased(const std::string& text) const = 0;
};

}  // namespace tallowen
