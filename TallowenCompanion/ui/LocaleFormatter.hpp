#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tallowen {

// Numbers, money and relative times as the user's locale writes them. A value
// built from an ICU locale name ("fr_FR", "en_US"), so that every text the
// menu shows can be produced for a chosen locale.
class LocaleFormatter {
public:
    explicit LocaleFormatter(std::string localeName);

    // The locale of the running process (LC_ALL, LC_NUMERIC, LC_MONETARY, LANG).
    static LocaleFormatter forProcess();

    const std::string& localeName() const { return localeName_; }
    // "," in French, "." in English.
    const std::string& decimalSeparator() const { return decimalSeparator_; }

    // Exactly `fractionDigits` fraction digits, with the locale's grouping.
    std::string decimal(double value, int fractionDigits) const;
    // With the locale's digit grouping: "1,234" in English, "1 234" (U+202F) in French.
    std::string groupedInteger(int64_t value) const;
    // An amount in US dollars ("USD") with exactly `fractionDigits` fraction digits.
    std::string usDollars(double dollars, int fractionDigits) const;
    // How long ago, in named, wide units: "il y a 3 heures", "hier", "3 hours
    // ago", "yesterday". The largest unit that holds the interval at least
    // once is used, truncated.
    std::string timeAgo(double elapsedSeconds) const;
    // The local time of day of `date` (process time zone) in the locale's short style.
    std::string shortTime(Date date) const;

private:
    std::string localeName_;
    std::string decimalSeparator_;
};

// "fr_FR.UTF-8" and "fr_FR@euro" give "fr_FR"; "C", "POSIX", "C.UTF-8" and an
// empty value give "en_US" (the POSIX locale's own ICU form drops grouping and
// writes "$ 3.50", which no reader expects).
std::string icuLocaleNameForPosixLocale(const std::string& posixLocale);

// The first set, non-empty variable of LC_ALL, LC_NUMERIC, LC_MONETARY and LANG,
// turned into an ICU locale name; "en_US" when none is set.
std::string icuLocaleNameFromEnvironment(const std::function<std::optional<std::string>(const char*)>& variable);

}  // namespace tallowen
