#include "readers/CursorReader.hpp"

#include "base/SqliteFileUri.hpp"

#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"
#include "readers/ModelPricing.hpp"

#include <map>
#include <memory>
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

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// A query that cannot be prepared yields no rows.
template <typename OnRow>
void forEachRow(sqlite3* database, const char* sql, OnRow&& onRow) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(database, sql, -1, &raw, nullptr) != SQLITE_OK) {
        sqlite3_finalize(raw);
        return;
    }
    const Statement statement(raw);
    while (sqlite3_step(statement.get()) == SQLITE_ROW) onRow(statement.get());
}

std::optional<std::string> textColumn(sqlite3_stmt* statement, int column) {
    const unsigned char* text = sqlite3_column_text(statement, column);
    if (text == nullptr) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(sqlite3_column_bytes(statement, column)));
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
    std::error_code code;
    if (!std::filesystem::exists(databasePath, code)) return std::nullopt;
    sqlite3* raw = nullptr;
    const int opened =
        sqlite3_open_v2(sqliteFileUri(databasePath, "mode=ro").c_str(), &raw, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    const Database database(raw);
    if (opened != SQLITE_OK) return std::nullopt;
    // The editor may hold a write lock: wait for it rather than fail at once.
    sqlite3_busy_timeout(database.get(), 4000);

    std::map<std::string, std::string> creationDayKeys;
    forEachRow(database.get(), creationQuery, [&](sqlite3_stmt* row) {
        auto conversation = textColumn(row, 0);
        const int64_t createdAtMilliseconds = sqlite3_column_int64(row, 1);
        if (!conversation || createdAtMilliseconds < 1) return;
        const Date created = Date::fromUnixSeconds(static_cast<double>(createdAtMilliseconds) / 1000.0);
        creationDayKeys[std::move(*conversation)] = dayKey(created, calendar);
    });

    DayMap days;
    forEachRow(database.get(), tokenQuery, [&](sqlite3_stmt* row) {
        auto conversation = textColumn(row, 0);
        if (!conversation) return;
        const int64_t inputTokens = sqlite3_column_int64(row, 1);
        const int64_t outputTokens = sqlite3_column_int64(row, 2);
        const int64_t messagesWithOutput = sqlite3_column_int64(row, 3);
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
