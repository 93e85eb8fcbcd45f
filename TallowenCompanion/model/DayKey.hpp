#pragma once

#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tallowen {

// "%04d-%02d-%02d" of the local date: keys sort as text in day order.
std::string dayKey(Date date, const LocalCalendar& calendar);
std::string dayKey(int year, int month, int day);

// The start of the key's day, or nothing unless the key holds exactly three
// integers between its hyphens (empty pieces and non-integers are dropped).
std::optional<Date> dateOfDayKey(std::string_view key, const LocalCalendar& calendar);

// Whether `text` is a day key as a person types one: "YYYY-MM-DD" naming a
// real day of the calendar ("2025-02-30" is not one).
bool isCalendarDayKey(std::string_view text, const LocalCalendar& calendar);

}  // namespace tallowen
