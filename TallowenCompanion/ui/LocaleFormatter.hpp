#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <string>

namespace tallowen {

enum class RelativeTimeUnit { second, minute, hour, day, week, month, year };

// How long ago, in whole units: the largest unit that holds the interval at
// least once, truncated. Months and years are the fixed lengths a reader
// rounds to anyway (30 and 365 days). Not a number or negative counts as 0 s.
struct RelativeTime {
    int64_t count = 0;
    RelativeTimeUnit unit = RelativeTimeUnit::second;

    friend bool operator==(const RelativeTime&, const RelativeTime&) = default;
};

RelativeTime relativeTimeOf(double elapsedSeconds);

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
    // ago", "yesterday", in the unit relativeTimeOf chooses.
    std::string timeAgo(double elapsedSeconds) const { return timeAgo(relativeTimeOf(elapsedSeconds)); }
    // `count` units ago, with the language's named form where it has one.
    virtual std::string timeAgo(RelativeTime elapsed) const = 0;
    // The local time of day of `date` (process time zone) in the locale's short style.
    virtual std::string shortTime(Date date) const = 0;
    // The text in upper case by the language-neutral rules ("été" gives "ÉTÉ").
    virtual std::string upperCased(const std::string& text) const = 0;
};

}  // namespace tallowen
