#pragma once

#include "model/Date.hpp"

#include <optional>
#include <string>

namespace tallowen {

struct LocalDateParts {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
};

// The Gregorian calendar in the process's local time zone (TZ is honoured).
// Every day key, start of day and hour of the engine comes from here.
class LocalCalendar {
public:
    LocalDateParts parts(Date date) const;
    // The first instant of the local day that holds `date`.
    Date startOfDay(Date date) const;
    // The first instant of the given local day; nothing when the fields do not
    // make a representable date. Out-of-range months and days roll over.
    std::optional<Date> startOfDay(int year, int month, int day) const;
    // The start of the day `days` calendar days after the day of `date`.
    std::optional<Date> startOfDayAdding(Date date, int days) const;
    // Names the zone's rules as they stand: the TZ setting and a digest of the
    // zone file it leads to (or of the system's local zone file), so that what
    // was computed under one zone is not taken for what another would give.
    std::string timeZoneIdentity() const;
};

}  // namespace tallowen
