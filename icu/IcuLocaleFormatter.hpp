#pragma once

#include "ui/LocaleFormatter.hpp"

#include <functional>
#include <optional>
#include <string>

namespace tallowen {

// The terminal's formatter: ICU, for a locale named the ICU way ("fr_FR",
// "en_US"), so that every text can be produced for a chosen locale.
class IcuLocaleFormatter final : public LocaleFormatter {
public:
    explicit IcuLocaleFormatter(std::string localeName);

    // The locale of the running process (LC_ALL, LC_NUMERIC, LC_MONETARY, LANG).
    static IcuLocaleFormatter forProcess();

    const std::string& localeName() const { return localeName_; }

    std::string decimalSeparator() const override { return decimalSeparator_; }
    std::string decimal(double value, int fractionDigits) const override;
    std::string groupedInteger(int64_t value) const override;
    std::string usDollars(double dollars, int fractionDigits) const override;
    using LocaleFormatter::timeAgo;
    std::string timeAgo(RelativeTime elapsed) const override;
    std::string shortTime(Date date) const override;
    std::string upperCased(const std::string& text) const override;

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
