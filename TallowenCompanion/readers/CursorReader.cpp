#include "readers/CursorReader.hpp"

#include "base/CheckedMath.hpp"
#include "base/SqliteStatement.hpp"
#include "model/DayKey.hpp"
#include "readers/CursorConnection.hpp"
#include "readers/ModelPricing.hpp"

#include <map>
#include <sqlite3.h>
#include <string>

namespace tallowen {
namespace {

constexpr const char* creationQuery =
    "SELECT substr(key, 14), json_extract(value, '$.createdAt')\n"
    "FROM cursorDiskKV WHERE key LIKE 'composerData:%'";

constexpr const char* tokenQuery =
    "SELECT substr(key, 10, 36),\n"
    "       SUM(COALESCE(json_extract(value, '$.tokenCount.inputTokens'), 0)),\n"
    "       SUM(COALESCE(json_extract(value, '$.tokenCount.outputTokens'), 0)),\n"
    "       SUM(CASE WHEN COALESCE(json_extract(value, '$.tokenCount.outputTokens'), 0) > 0 THEN 1 ELSE 0 END)\n"
    "FROM cursorDiskKV WHERE key LIKE 'bubbleId:%'\n"
    "GROUP BY substr(key, 10, 36)";

// A query that cannot be prepared yields no rows.
template <typename OnRow>
void forEachRow(const SqliteConnection& database, const char* sql, OnRow&& onRow) {
    auto statement = SqliteStatement::prepare(database.handle(), sql);
    if (!statement) return;
    while (statement->step() == SQLITE_ROW) onRow(*statement);
}

}  // namespace

std::optional<std::filesystem::path> cursorDatabasePath(const std::filesystem::path& homeFolder) {
    const std::filesystem::path places[] = {
        homeFolder / "Library" / "Application Support" / "Cursor" / "User" / "globalStorage" / "state.vscdb",
        homeFolder / ".config" / "Cursor" / "User" / "globalStorage" / "state.vscdb",
    };
    for (const auto& place : places) {
        std::error_code code;
        if (std::filesystem::is_regular_file(place, code)) return place;
    }
    return std::nullopt;
}

std::optional<DayMap> readCursorUsage(const std::filesystem::path& homeFolder, const LocalCalendar& calendar) {
    const auto path = cursorDatabasePath(homeFolder);
    if (!path) return std::nullopt;
    return readCursorDatabase(*path, calendar);
}

std::optional<DayMap> readCursorDatabase(const std::filesystem::path& databasePath, const LocalCalendar& calendar) {
    LockWaitBudget budget;
    return readCursorDatabase(databasePath, calendar, budget);
}

std::optional<DayMap> readCursorDatabase(const std::filesystem::path& databasePath, const LocalCalendar& calendar,
                                         LockWaitBudget& budget) {
    std::error_code code;
    if (!std::filesystem::exists(databasePath, code)) return std::nullopt;
    // The editor may hold a write lock: both queries wait for it rather than fail at once.
    const auto database = openCursorDatabase(databasePath, budget);
    if (!database) return std::nullopt;

    std::map<std::string, std::string> creationDayKeys;
    forEachRow(*database, creationQuery, [&](const SqliteStatement& row) {
        auto conversation = row.text(0);
        const int64_t createdAtMilliseconds = row.integer(1);
        if (!conversation || createdAtMilliseconds < 1) return;
        const Date created = Date::fromUnixSeconds(static_cast<double>(createdAtMilliseconds) / 1000.0);
        creationDayKeys[std::move(*conversation)] = dayKey(created, calendar);
    });

    DayMap days;
    forEachRow(*database, tokenQuery, [&](const SqliteStatement& row) {
        auto conversation = row.text(0);
        if (!conversation) return;
        const int64_t inputTokens = row.integer(1);
        const int64_t outputTokens = row.integer(2);
        const int64_t messagesWithOutput = row.integer(3);
        if (checkedAdd(inputTokens, outputTokens) < 1) return;
        const auto creationDay = creationDayKeys.find(*conversation);
        if (creationDay == creationDayKeys.end()) return;
        DayUsage& day = days[creationDay->second];
        day.sessions.insert(std::move(*conversation));
        addChecked(day.requests, messagesWithOutput);
        addChecked(day.inputTokens, inputTokens);
        addChecked(day.outputTokens, outputTokens);
        addChecked(day.waterMilliliters, waterMilliliters(inputTokens, outputTokens, 0));
    });
    return days;
}

}  // namespace tallowen
