#include "readers/CursorDayCache.hpp"

#include "readers/CursorConnection.hpp"
#include "readers/CursorReader.hpp"

namespace tallowen {

std::optional<CursorStamps> currentCursorStamps(const std::filesystem::path& databasePath,
                                                const LocalCalendar& calendar) {
    const auto database = regularFileStamp(databasePath);
    if (!database) return std::nullopt;
    std::filesystem::path writeAheadLog = databasePath;
    writeAheadLog += "-wal";
    return CursorStamps{databasePath.string(), *database, regularFileStamp(writeAheadLog),
                        calendar.timeZoneIdentity()};
}

std::optional<DayMap> readCursorUsage(const std::filesystem::path& homeFolder, const LocalCalendar& calendar,
                                      std::optional<CursorDayCache>& cache) {
    const auto path = cursorDatabasePath(homeFolder);
    if (!path) return std::nullopt;
    const auto before = currentCursorStamps(*path, calendar);
    if (before && cache && cache->stamps == *before) return cache->days;

    LockWaitBudget budget;
    auto reading = readCursorReading(*path, calendar, budget);
    // A change made while the database was read may or may not be in what was read.
    if (reading && reading->repeatable && before && currentCursorStamps(*path, calendar) == before)
        cache = CursorDayCache{*before, reading->days};
    else
        cache.reset();
    if (!reading) return std::nullopt;
    return std::move(reading->days);
}

}  // namespace tallowen
