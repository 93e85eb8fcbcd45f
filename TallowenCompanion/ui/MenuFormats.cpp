#include "ui/MenuFormats.hpp"

#include <cstdio>

namespace tallowen {

std::string fixedWithSeparator(double value, int fractionDigits, std::string_view separator) {
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%.*f", fractionDigits, value);
    std::string text = buffer;
    if (const auto point = text.find('.'); point != std::string::npos) text.replace(point, 1, separator);
    return text;
}

std::string tokenText(int64_t tokens, const LocaleFormatter& locale) {
    if (tokens > 999999) return fixedWithSeparator(static_cast<double>(tokens) / 1000000.0, 1, locale.decimalSeparator()) + " M";
    if (tokens >= 1000) return std::to_string(tokens / 1000) + " k";
    return std::to_string(tokens);
}

std::string moneyText(int64_t cents, const LocaleFormatter& locale) {
    if (cents < 1) return "?";
    return locale.usDollars(static_cast<double>(cents) / 100.0, cents < 1000 ? 2 : 0);
}

std::string litresText(int64_t milliliters, const LocaleFormatter& locale) {
    const double litres = static_cast<double>(milliliters) / 1000.0;
    return locale.decimal(litres, litres < 1.0 ? 1 : 0) + " L";
}

std::string requestCountText(int64_t requests) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%02lld", static_cast<long long>(requests));
    return buffer;
}

}  // namespace tallowen
