#include "capi/CallbackLocaleFormatter.hpp"

#include "capi/CApiText.hpp"

#include <cstdio>

namespace tallowen::capi {
namespace {

template <typename Callback, typename... Arguments>
std::string textOrFallback(std::string fallback, Callback callback, void* context, Arguments... arguments) {
    if (callback == nullptr) return fallback;
    tw_reply reply;
    callback(context, arguments..., &reply);
    if (reply.failure || !reply.text) return fallback;
    return *reply.text;
}

std::string fixed(double value, int fractionDigits) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", fractionDigits, value);
    return buffer;
}

static_assert(static_cast<int>(RelativeTimeUnit::second) == TW_TIME_UNIT_SECOND &&
              static_cast<int>(RelativeTimeUnit::week) == TW_TIME_UNIT_WEEK &&
              static_cast<int>(RelativeTimeUnit::year) == TW_TIME_UNIT_YEAR);

// In the order of RelativeTimeUnit and tw_time_unit.
constexpr const char* unitSymbols[] = {"s", "min", "h", "j", "sem.", "mois", "an"};

}  // namespace

CallbackLocaleFormatter::~CallbackLocaleFormatter() {
    if (callbacks_.release != nullptr) callbacks_.release(callbacks_.context);
}

std::string CallbackLocaleFormatter::decimalSeparator() const {
    return textOrFallback(".", callbacks_.decimal_separator, callbacks_.context);
}

std::string CallbackLocaleFormatter::decimal(double value, int fractionDigits) const {
    return textOrFallback(fixed(value, fractionDigits), callbacks_.decimal, callbacks_.context, value,
                          static_cast<int32_t>(fractionDigits));
}

std::string CallbackLocaleFormatter::groupedInteger(int64_t value) const {
    return textOrFallback(std::to_string(value), callbacks_.grouped_integer, callbacks_.context, value);
}

std::string CallbackLocaleFormatter::usDollars(double dollars, int fractionDigits) const {
    return textOrFallback("$" + fixed(dollars, fractionDigits), callbacks_.us_dollars, callbacks_.context, dollars,
                          static_cast<int32_t>(fractionDigits));
}

std::string CallbackLocaleFormatter::timeAgo(RelativeTime elapsed) const {
    return textOrFallback(std::to_string(elapsed.count) + " " + unitSymbols[static_cast<int>(elapsed.unit)],
                          callbacks_.time_ago, callbacks_.context, elapsed.count,
                          static_cast<tw_time_unit>(elapsed.unit));
}

std::string CallbackLocaleFormatter::shortTime(Date date) const {
    return textOrFallback("", callbacks_.short_time, callbacks_.context, date.secondsSinceReferenceDate);
}

std::string CallbackLocaleFormatter::upperCased(const std::string& text) const {
    return textOrFallback(text, callbacks_.upper_cased, callbacks_.context, text.c_str());
}

}  // namespace tallowen::capi
