#include "model/DayKey.hpp"

#include <charconv>
#include <cstdio>
#include <vector>

namespace tallowen {

std::string dayKey(int year, int month, int day) {
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", year, month, day);
    return buffer;
}

std::string dayKey(Date date, const LocalCalendar& calendar) {
    const LocalDateParts p = calendar.parts(date);
    return dayKey(p.year, p.month, p.day);
}

std::optional<Date> dateOfDayKey(std::string_view key, const LocalCalendar& calendar) {
    std::vector<long long> numbers;
    size_t start = 0;
    while (start <= key.size()) {
        size_t end = key.find('-', start);
        if (end == std::string_view::npos) end = key.size();
        const std::string_view piece = key.substr(start, end - start);
        if (!piece.empty()) {
            long long value = 0;
            const auto [next, error] = std::from_chars(piece.data(), piece.data() + piece.size(), value);
            if (error == std::errc() && next == piece.data() + piece.size()) numbers.push_back(value);
        }
        start = end + 1;
    }
    if (numbers.size() != 3) return std::nullopt;
    for (const long long n : numbers)
        if (n < -1000000 || n > 1000000) return std::nullopt;
    return calendar.startOfDay(static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
                               static_cast<int>(numbers[2]));
}

bool isCalendarDayKey(std::string_view text, const LocalCalendar& calendar) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i != 4 && i != 7 && (text[i] < '0' || text[i] > '9')) return false;
    const auto date = dateOfDayKey(text, calendar);
    return date && dayKey(*date, calendar) == text;
}

}  // namespace tallowen
