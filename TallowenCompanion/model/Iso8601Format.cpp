#include "model/Iso8601Format.hpp"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tallowen {
namespace {

constexpr double writableUnixSecondsLimit = 3.0e15;

int64_t floorDivide(int64_t value, int64_t divisor) {
    int64_t quotient = value / divisor;
    if (value % divisor != 0 && (value < 0) != (divisor < 0)) --quotient;
    return quotient;
}

struct CivilDate {
    int64_t year;
    int month;
    int day;
};

// Days since 1970-01-01 to a proleptic Gregorian date.
CivilDate civilFromDays(int64_t days) {
    days += 719468;
    const int64_t era = floorDivide(days, 146097);
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

}  // namespace

std::optional<std::string> iso8601UtcText(Date date) {
    const double unixSeconds = date.unixSeconds();
    if (!std::isfinite(unixSeconds) || std::fabs(unixSeconds) > writableUnixSecondsLimit) return std::nullopt;
    const auto totalMilliseconds = static_cast<int64_t>(std::llround(unixSeconds * 1000.0));
    const int64_t totalSeconds = floorDivide(totalMilliseconds, 1000);
    const int64_t milliseconds = totalMilliseconds - totalSeconds * 1000;
    const int64_t days = floorDivide(totalSeconds, 86400);
    const int64_t secondOfDay = totalSeconds - days * 86400;
    const CivilDate civil = civilFromDays(days);

    char buffer[64];
    int length = std::snprintf(buffer, sizeof buffer, "%04lld-%02d-%02dT%02d:%02d:%02d",
                               static_cast<long long>(civil.year), civil.month, civil.day,
                               static_cast<int>(secondOfDay / 3600), static_cast<int>(secondOfDay / 60 % 60),
                               static_cast<int>(secondOfDay % 60));
    if (milliseconds != 0)
        length += std::snprintf(buffer + length, sizeof buffer - static_cast<size_t>(length), ".%03d",
                                static_cast<int>(milliseconds));
    std::string text(buffer, static_cast<size_t>(length));
    text += 'Z';
    return text;
}

}  // namespace tallowen
