#pragma once

#include <optional>
#include <string>

struct sqlite3;

namespace tallowen {

// One open SQLite database, closed with the object. Statements still open
// when it goes keep the database until they are finalized.
class SqliteConnection {
public:
    // `name` is a path, or a URI when `flags` hold SQLITE_OPEN_URI. Nothing
    // when the open fails; `error`, when given, then holds SQLite's message.
    static std::optional<SqliteConnection> open(const std::string& name, int flags, std::string* error = nullptr);

    SqliteConnection(SqliteConnection&& other) noexcept;
    SqliteConnection& operator=(SqliteConnection&& other) noexcept;
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;
    ~SqliteConnection();

    sqlite3* handle() const { return database_; }
    // Runs statements that return nothing of interest; false on the first failure.
    bool execute(const char* sql);
    std::string errorMessage() const;

private:
    explicit SqliteConnection(sqlite3* database) : database_(database) {}

    sqlite3* database_ = nullptr;
};

}  // namespace tallowen
