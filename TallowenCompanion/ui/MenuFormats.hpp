#pragma once

#include "ui/LocaleFormatter.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tallowen {

// The token format: above 999999 "2.5 M" (one decimal, the locale's separator),
// from 1000 "12 k" (thousands, truncated), below that the plain number.
std::string tokenText(int64_t tokens, const LocaleFormatter& locale);

// The money format: "?" below one cent (an unknown cost, deliberately), else
// US dollars with two fraction digits under ten dollars and none from ten up.
std::string moneyText(int64_t cents, const LocaleFormatter& locale);

// Litres with one fraction digit under one litre and none from one up, then " L".
std::string litresText(int64_t milliliters, const LocaleFormatter& locale);

// Two digits at least: "00", "07", "123".
std::string requestCountText(int64_t requests);

// `value` printed with printf's "%.*f", its decimal point then replaced by `separator`.
std::string fixedWithSeparator(double value, int fractionDigits, std::string_view separator);

}  // namespace tallowen
