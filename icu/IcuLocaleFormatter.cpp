#include "IcuLocaleFormatter.hpp"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/reldatefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace tallowen {
namespace {

constexpr const char* fallbackLocaleName = "en_US";

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::string formattedOrFallback(const icu::number::LocalizedNumberFormatter& formatter, double value,
                                int fractionDigits) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text = formatter.formatDouble(value, status).toString(status);
    if (U_SUCCESS(status)) return utf8(text);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", fractionDigits, value);
    return buffer;
}

int clampedFractionDigits(int digits) { return digits < 0 ? 0 : (digits > 15 ? 15 : digits); }

}  // namespace

IcuLocaleFormatter::IcuLocaleFormatter(std::string localeName) : localeName_(std::move(localeName)) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(icu::Locale(localeName_.c_str()), status);
    decimalSeparator_ =
        U_SUCCESS(status) ? utf8(symbols.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol)) : ".";
    if (decimalSeparator_.empty()) decimalSeparator_ = ".";
}

IcuLocaleFormatter IcuLocaleFormatter::forProcess() {
    return IcuLocaleFormatter(icuLocaleNameFromEnvironment([](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        if (value == nullptr) return std::nullopt;
        return std::string(value);
    }));
}

std::string IcuLocaleFormatter::decimal(double value, int fractionDigits) const {
    const int digits = clampedFractionDigits(fractionDigits);
    const auto formatter = icu::number::NumberFormatter::withLocale(icu::Locale(localeName_.c_str()))
                               .precision(icu::number::Precision::fixedFraction(digits));
    return formattedOrFallback(formatter, value, digits);
}

std::string IcuLocaleFormatter::groupedInteger(int64_t value) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text = icu::number::NumberFormatter::withLocale(icu::Locale(localeName_.c_str()))
                                        .formatInt(value, status)
                                        .toString(status);
    if (U_SUCCESS(status)) return utf8(text);
    return std::to_string(value);
}

std::string IcuLocaleFormatter::usDollars(double dollars, int fractionDigits) const {
    const int digits = clampedFractionDigits(fractionDigits);
    UErrorCode status = U_ZERO_ERROR;
    const icu::CurrencyUnit usd(u"USD", status);
    if (U_FAILURE(status)) return "$" + decimal(dollars, digits);
    const auto formatter = icu::number::NumberFormatter::withLocale(icu::Locale(localeName_.c_str()))
                               .unit(usd)
                               .precision(icu::number::Precision::fixedFraction(digits));
    return formattedOrFallback(formatter, dollars, digits);
}

std::string IcuLocaleFormatter::timeAgo(RelativeTime elapsed) const {
    constexpr URelativeDateTimeUnit units[] = {UDAT_REL_UNIT_SECOND, UDAT_REL_UNIT_MINUTE, UDAT_REL_UNIT_HOUR,
                                               UDAT_REL_UNIT_DAY,    UDAT_REL_UNIT_WEEK,   UDAT_REL_UNIT_MONTH,
                                               UDAT_REL_UNIT_YEAR};
    UErrorCode status = U_ZERO_ERROR;
    icu::RelativeDateTimeFormatter formatter(icu::Locale(localeName_.c_str()), nullptr, UDAT_STYLE_LONG,
                                             UDISPCTX_CAPITALIZATION_NONE, status);
    icu::UnicodeString text;
    // The named form where the language has one ("hier", "la semaine dernière"), else the number.
    if (U_SUCCESS(status))
        formatter.format(-static_cast<double>(elapsed.count), units[static_cast<int>(elapsed.unit)], text, status);
    if (U_SUCCESS(status)) return utf8(text);
    return std::to_string(elapsed.count);
}

std::string IcuLocaleFormatter::shortTime(Date date) const {
    // The wall-clock fields come from the process's zone (TZ is honoured even
    // when it changes); ICU then only lays them out, in GMT so it adds no offset.
    const double unix = std::floor(date.unixSeconds());
    std::tm local{};
    const std::time_t seconds = static_cast<std::time_t>(std::isfinite(unix) ? unix : 0);
    if (localtime_r(&seconds, &local) == nullptr) return "";
    char fallback[16];
    std::snprintf(fallback, sizeof fallback, "%02d:%02d", local.tm_hour, local.tm_min);

    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, icu::Locale(localeName_.c_str())));
    if (!formatter) return fallback;
    formatter->setTimeZone(*icu::TimeZone::getGMT());
    const UDate wallClockMilliseconds = (local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec) * 1000.0;
    icu::UnicodeString text;
    formatter->format(wallClockMilliseconds, text);
    if (U_FAILURE(status) || text.isEmpty()) return fallback;
    return utf8(text);
}

std::string IcuLocaleFormatter::upperCased(const std::string& text) const {
    icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(text);
    unicode.toUpper(icu::Locale::getRoot());
    return utf8(unicode);
}

std::string icuLocaleNameForPosixLocale(const std::string& posixLocale) {
    std::string name = posixLocale.substr(0, posixLocale.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") return fallbackLocaleName;
    return name;
}

std::string icuLocaleNameFromEnvironment(const std::function<std::optional<std::string>(const char*)>& variable) {
    for (const char* name : {"LC_ALL", "LC_NUMERIC", "LC_MONETARY", "LANG"}) {
        const auto value = variable(name);
        if (value && !value->empty()) return icuLocaleNameForPosixLocale(*value);
    }
    return fallbackLocaleName;
}

}  // namespace tallowen
