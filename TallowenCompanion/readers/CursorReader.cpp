#include "readers/CursorReader.hpp"

#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"
#include "readers/CursorConnection.hpp"
#include "readers/CursorFastPath.hpp"
#include "readers/ModelPricing.hpp"

#include <unordered_map>
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

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// A query that cannot be prepared yields no rows. False when it stopped for a
// reason that may pass: an error in the data itself (malformed JSON, a sum
// that overflows, no such table) comes back with every read of the same bytes.
template <typename OnRow>
bool forEachRow(sqlite3* database, const char* sql, OnRow&& onRow) {
    sqlite3_stmt* raw = nullptr;
    const int prepared = sqlite3_prepare_v2(database, sql, -1, &raw, nullptr);
    if (prepared != SQLITE_OK) {
        sqlite3_finalize(raw);
        return prepared == SQLITE_ERROR;
    }
    const Statement statement(raw);
    int stepped = SQLITE_ROW;
    while ((stepped = sqlite3_step(statement.get())) == SQLITE_ROW) onRow(statement.get());
    return stepped == SQLITE_DONE || stepped == SQLITE_ERROR;
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
    LockWaitBudget budget;
    return readCursorDatabase(databasePath, calendar, budget);
}

std::optional<DayMap> readCursorDatabase(const std::filesystem::path& databasePath, const LocalCalendar& calendar,
                                         LockWaitBudget& budget) {
    auto reading = readCursorReading(databasePath, calendar, budget);
    if (!reading) return std::nullopt;
    return std::move(reading->days);
}

std::optional<CursorReading> readCursorReading(const std::filesystem::path& databasePath,
                                               const LocalCalendar& calendar, LockWaitBudget& budget) {
    std::error_code code;
    if (!std::filesystem::exists(databasePath, code)) return std::nullopt;
    // The editor may hold a write lock: every query waits for it rather than fail at once.
    const auto database = openCursorDatabase(databasePath, budget);
    if (!database) return std::nullopt;

    // The fast way reads the same rows; when it meets a value it cannot
    // settle exactly as SQLite would, the reference decides instead.
    auto rows = readCursorRowsFast(database->handle());
    if (!rows) rows = readCursorRowsByReference(database->handle());
    return CursorReading{cursorDaysFromRows(*rows, calendar), rows->repeatable};
}

CursorRows readCursorRowsByReference(sqlite3* database) {
    CursorRows rows;
    rows.repeatable = forEachRow(database, creationQuery, [&](sqlite3_stmt* row) {
        auto conversation = textColumn(row, 0);
        if (conversation) rows.creations.push_back({std::move(*conversation), sqlite3_column_int64(row, 1)});
    });
    const bool tokensRepeatable = forEachRow(database, tokenQuery, [&](sqlite3_stmt* row) {
        auto conversation = textColumn(row, 0);
        if (!conversation) return;
        rows.conversations.push_back({std::move(*conversation), sqlite3_column_int64(row, 1),
                                      sqlite3_column_int64(row, 2), sqlite3_column_int64(row, 3)});
    });
    rows.repeatable = rows.repeatable && tokensRepeatable;
    return rows;
}

DayMap cursorDaysFromRows(const CursorRows& rows, const LocalCalendar& calendar) {
    std::unordered_map<std::string, std::string> creationDayKeys;
    for (const CursorCreation& creation : rows.creations) {
        // No creation time, or zero: the conversation has no day.
        if (creation.createdAtMilliseconds < 1) continue;
        const Date created = Date::fromUnixSeconds(static_cast<double>(creation.createdAtMilliseconds) / 1000.0);
        creationDayKeys[creation.conversation] = dayKey(created, calendar);
    }
    DayMap days;
    for (const CursorConversationTokens& tokens : rows.conversations) {
        if (checkedAdd(tokens.inputTokens, tokens.outputTokens) < 1) continue;
        const auto creationDay = creationDayKeys.find(tokens.conversation);
        if (creationDay == creationDayKeys.end()) continue;
        DayUsage& day = days[creationDay->second];
        day.sessions.insert(tokens.conversation);
        addChecked(day.requests, tokens.messagesWithOutput);
        addChecked(day.inputTokens, tokens.inputTokens);
        addChecked(day.outputTokens, tokens.outputTokens);
        addChecked(day.waterMilliliters, waterMilliliters(tokens.inputTokens, tokens.outputTokens, 0));
    }
    return days;
}

}  // namespace tallowen
