#pragma once

#include "model/DayUsage.hpp"
#include "model/LocalCalendar.hpp"
#include "readers/FileStamp.hpp"

#include <filesystem>
#include <optional>
#include <string>

namespace tallowen {

// Everything Cursor's days depend on, short of the database's bytes: which
// database, its file's and its "-wal" file's stamps (the latter absent when
// there is none), and the time zone the day keys were made in.
struct CursorStamps {
    std::string databasePath;
    FileStamp database;
    std::optional<FileStamp> writeAheadLog;
    std::string timeZone;

    friend bool operator==(const CursorStamps&, const CursorStamps&) = default;
};

// Cursor's days as a full read gave them, under the stamps of that read.
struct CursorDayCache {
    CursorStamps stamps;
    DayMap days;

    friend bool operator==(const CursorDayCache&, const CursorDayCache&) = default;
};

// The stamps a cache was made under, if any: what tells a caller whether a
// run renewed its cache.
inline std::optional<CursorStamps> cursorStampsOf(const std::optional<CursorDayCache>& cache) {
    if (!cache) return std::nullopt;
    return cache->stamps;
}

// The stamps as they stand now; nothing when the database file is not there.
std::optional<CursorStamps> currentCursorStamps(const std::filesystem::path& databasePath,
                                                const LocalCalendar& calendar);

// Cursor's days under a home folder, as readCursorUsage gives them, but taken
// from `cache` without opening the database when its stamps are the current
// ones. After a full read, `cache` holds what it gave when the stamps did not
// move meanwhile and the read would give the same again; otherwise it is emptied.
std::optional<DayMap> readCursorUsage(const std::filesystem::path& homeFolder, const LocalCalendar& calendar,
                                      std::optional<CursorDayCache>& cache);

}  // namespace tallowen
