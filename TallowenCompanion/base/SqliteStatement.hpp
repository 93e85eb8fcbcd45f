#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tallowen {

// One prepared statement, finalized with the object.
class SqliteStatement {
public:
    // Nothing when the SQL cannot be prepared. A persistent statement is one
    // meant to be reset and run many times.
    static std::optional<SqliteStatement> prepare(sqlite3* database, const char* sql, bool persistent = false);

    SqliteStatement(SqliteStatement&& other) noexcept;
    SqliteStatement& operator=(SqliteStatement&& other) noexcept;
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    // SQLITE_ROW while a row is available, SQLITE_DONE at the end, else SQLite's error code.
    int step();
    // Back to before the first row, with no values bound.
    void reset();

    // Parameters count from 1; each returns SQLite's result code.
    int bind(int index, std::string_view text);
    int bind(int index, int64_t value);
    int bind(int index, double value);
    int bindNull(int index);

    // Columns count from 0.
    bool isNull(int column) const;
    int64_t integer(int column) const;
    double real(int column) const;
    // Nothing for NULL.
    std::optional<std::string> text(int column) const;

private:
    explicit SqliteStatement(sqlite3_stmt* statement) : statement_(statement) {}

    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace tallowen
