#pragma once

#include "model/DayUsage.hpp"
#include "model/LocalCalendar.hpp"

#include <filesystem>
#include <optional>

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

}  // namespace tallowen
