#include "readers/Iso8601.hpp"

#include <cstdint>

namespace tallowen {
namespace {

// Reads fixed-width fields left to right; any mismatch leaves it failed.
class Cursor {
public:
    explicit Cursor(std::string_view text) : text_(text) {}

    bool atEnd() const { return position_ == text_.size(); }
    bool peek(char expected) const { return position_ < text_.size() && text_[position_] == expected; }

    bool literal(char expected) {
        if (!peek(expected)) return false;
        ++position_;
        return true;
    }

    bool digits(size_t count, int& value) {
        if (text_.size() - position_ < count) return false;
        value = 0;
        for (size_t i = 0; i < count; ++i) {
            const char c = text_[position_ + i];
            if (c < '0' || c > '9') return false;
            value = value * 10 + (c - '0');
        }
        position_ += count;
        return true;
    }

    // One or more digits after the decimal point, as a fraction of a second.
    // Digits past the nanosecond are read but cannot change a double timestamp.
    bool fraction(double& value) {
        int64_t numerator = 0;
        int64_t denominator = 1;
        const size_t start = position_;
        while (position_ < text_.size() && text_[position_] >= '0' && text_[position_] <= '9') {
            if (denominator < 1000000000) {
                numerator = numerator * 10 + (text_[position_] - '0');
                denominator *= 10;
            }
            ++position_;
        }
        value = static_cast<double>(numerator) / static_cast<double>(denominator);
        return position_ > start;
    }

private:
    std::string_view text_;
    size_t position_ = 0;
};

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) {
    static constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : lengths[month - 1];
}

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's days_from_civil).
int64_t daysFromCivil(int year, int month, int day) {
    const int64_t y = static_cast<int64_t>(year) - (month <= 2 ? 1 : 0);
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yearOfEra = y - era * 400;
    const int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// "Z", "+HH:MM", "-HH:MM", "+HHMM" or "-HHMM", as seconds east of UTC.
bool zoneOffset(Cursor& cursor, int64_t& offsetSeconds) {
    if (cursor.literal('Z')) {
        offsetSeconds = 0;
        return true;
    }
    int sign = 0;
    if (cursor.literal('+')) sign = 1;
    else if (cursor.literal('-')) sign = -1;
    else return false;
    int hours = 0;
    int minutes = 0;
    if (!cursor.digits(2, hours)) return false;
    cursor.literal(':');
    if (!cursor.digits(2, minutes)) return false;
    if (hours > 23 || minutes > 59) return false;
    offsetSeconds = sign * (hours * 3600 + minutes * 60);
    return true;
}

}  // namespace

std::optional<Date> parseIso8601Timestamp(std::string_view text) {
    Cursor cursor(text);
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (!cursor.digits(4, year) || !cursor.literal('-') || !cursor.digits(2, month) || !cursor.literal('-') ||
        !cursor.digits(2, day) || !cursor.literal('T') || !cursor.digits(2, hour) || !cursor.literal(':') ||
        !cursor.digits(2, minute) || !cursor.literal(':') || !cursor.digits(2, second))
        return std::nullopt;
    double fractionSeconds = 0;
    if (cursor.literal('.') && !cursor.fraction(fractionSeconds)) return std::nullopt;
    int64_t offsetSeconds = 0;
    if (!zoneOffset(cursor, offsetSeconds) || !cursor.atEnd()) return std::nullopt;
    if (month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month) || hour > 23 || minute > 59 ||
        second > 59)
        return std::nullopt;

    const int64_t unixSeconds =
        daysFromCivil(year, month, day) * 86400 + hour * 3600 + minute * 60 + second - offsetSeconds;
    const auto referenceSeconds = unixSeconds - static_cast<int64_t>(Date::unixEpochOffsetSeconds);
    return Date{static_cast<double>(referenceSeconds) + fractionSeconds};
}

}  // namespace tallowen
