#pragma once

#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"

namespace tallowen::testing {

// A local wall-clock time in the process's current time zone.
inline Date localDate(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    const auto start = LocalCalendar{}.startOfDay(year, month, day);
    return start->addingSeconds(hour * 3600.0 + minute * 60.0 + second);
}

inline Date utcDate(int year, int month, int day, int hour = 0, int minute = 0, double second = 0) {
    // Days from civil, proleptic Gregorian.
    const int y = year - (month <= 2 ? 1 : 0);
    const int era = (y >= 0 ? y : y - 399) / 400;
    const int yoe = y - era * 400;
    const int doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const long long days = static_cast<long long>(era) * 146097 + doe - 719468;
    return Date::fromUnixSeconds(static_cast<double>(days) * 86400.0 + hour * 3600.0 + minute * 60.0 + second);
}

}  // namespace tallowen::testing
