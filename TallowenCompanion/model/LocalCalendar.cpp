#include "model/LocalCalendar.hpp"

#include <cmath>
#include <ctime>

namespace tallowen {
namespace {

bool localParts(Date date, std::tm& out) {
    const double unix = std::floor(date.unixSeconds());
    if (!std::isfinite(unix) || unix < -6.0e16 || unix > 6.0e16) return false;
    const std::time_t seconds = static_cast<std::time_t>(unix);
    return localtime_r(&seconds, &out) != nullptr;
}

}  // namespace

LocalDateParts LocalCalendar::parts(Date date) const {
    std::tm tm{};
    if (!localParts(date, tm)) return {};
    return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour};
}

std::optional<Date> LocalCalendar::startOfDay(int year, int month, int day) const {
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&tm);
    // -1 is mktime's error; as a real instant it could never start a day.
    if (seconds == static_cast<std::time_t>(-1)) return std::nullopt;
    // A zone whose day begins with a skipped hour makes mktime land after
    // midnight; that instant is still the first of the day.
    return Date::fromUnixSeconds(static_cast<double>(seconds));
}

Date LocalCalendar::startOfDay(Date date) const {
    const LocalDateParts p = parts(date);
    return startOfDay(p.year, p.month, p.day).value_or(date);
}

std::optional<Date> LocalCalendar::startOfDayAdding(Date date, int days) const {
    const LocalDateParts p = parts(date);
    return startOfDay(p.year, p.month, p.day + days);
}

}  // namespace tallowen
