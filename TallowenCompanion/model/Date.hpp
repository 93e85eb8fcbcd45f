#pragma once

#include <compare>
#include <cstdint>

namespace tallowen {

// A point in time as seconds since 2001-01-01 00:00:00 UTC, the reference the
// stored files and the synchronised records share.
struct Date {
    double secondsSinceReferenceDate = 0;

    static constexpr double unixEpochOffsetSeconds = 978307200.0;

    static constexpr Date fromUnixSeconds(double unixSeconds) {
        return Date{unixSeconds - unixEpochOffsetSeconds};
    }
    constexpr double unixSeconds() const { return secondsSinceReferenceDate + unixEpochOffsetSeconds; }
    constexpr Date addingSeconds(double seconds) const { return Date{secondsSinceReferenceDate + seconds}; }
    constexpr double secondsSince(Date other) const {
        return secondsSinceReferenceDate - other.secondsSinceReferenceDate;
    }

    // Whether a calendar can show it: within the years 1 to 9999 (UTC). A
    // stored value outside them, or not a number at all, counts as no date.
    constexpr bool isUsable() const {
        return secondsSinceReferenceDate >= -63113904000.0 && secondsSinceReferenceDate <= 252423993599.0;
    }

    // Used where a file's modification time is unknown.
    static constexpr Date distantPast() { return Date{-63114076800.0}; }

    friend constexpr auto operator<=>(const Date&, const Date&) = default;
};

}  // namespace tallowen
