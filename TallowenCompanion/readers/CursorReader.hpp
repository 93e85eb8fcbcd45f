#pragma once

#include "model/DayUsage.hpp"
#include "model/LocalCalendar.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace tallowen {

// Where Cursor keeps its state database under a home folder: the macOS place,
// or else the Linux one. Nothing when neither holds a file.
std::optional<std::filesystem::path> cursorDatabasePath(const std::filesystem::path& homeFolder);

// Cursor's conversations as days: each conversation's tokens, requests (its
// messages with output) and water are booked on the day it was created.
// Nothing when the database is missing or cannot be opened.
std::optional<DayMap> readCursorUsage(const std::filesystem::path& homeFolder, const LocalCalendar& calendar);

// The same from a database file given directly.
std::optional<DayMap> readCursorDatabase(const std::filesystem::path& databasePath, const LocalCalendar& calendar);

class LockWaitBudget;
// The same, its waits for the editor's locks drawn from `budget`.
std::optional<DayMap> readCursorDatabase(const std::filesystem::path& databasePath, const LocalCalendar& calendar,
                                         LockWaitBudget& budget);

// What one read of the database gave, and whether another read of the same
// bytes would give it again: not when a query was cut short by something
// passing, such as a lock held too long or a failing disk.
struct CursorReading {
    DayMap days;
    bool repeatable = true;
};

// Nothing when the database cannot be opened.
std::optional<CursorReading> readCursorReading(const std::filesystem::path& databasePath,
                                               const LocalCalendar& calendar, LockWaitBudget& budget);

// The rows Cursor's days are made of: each conversation's creation time, and
// its messages' token sums.
struct CursorCreation {
    std::string conversation;
    int64_t createdAtMilliseconds = 0;

    friend bool operator==(const CursorCreation&, const CursorCreation&) = default;
};
struct CursorConversationTokens {
    std::string conversation;
    int64_t inputTokens = 0;
    int64_t outputTokens = 0;
    int64_t messagesWithOutput = 0;

    friend bool operator==(const CursorConversationTokens&, const CursorConversationTokens&) = default;
};
struct CursorRows {
    // In table order: a later row of the same conversation replaces an earlier one.
    std::vector<CursorCreation> creations;
    // In the order of the conversation identifiers' bytes.
    std::vector<CursorConversationTokens> conversations;
    bool repeatable = true;

    friend bool operator==(const CursorRows&, const CursorRows&) = default;
};

DayMap cursorDaysFromRows(const CursorRows& rows, const LocalCalendar& calendar);

// The rows by the two queries as they are written down, json_extract and all:
// the reference that any faster way of reading must match.
CursorRows readCursorRowsByReference(sqlite3* database);

}  // namespace tallowen
