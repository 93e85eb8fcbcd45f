#include "base/SqliteConnection.hpp"

#include <sqlite3.h>

#include <utility>

namespace tallowen {

std::optional<SqliteConnection> SqliteConnection::open(const std::string& name, int flags, std::string* error) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &database, flags, nullptr);
    if (result == SQLITE_OK) return SqliteConnection(database);
    if (error) *error = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(result);
    sqlite3_close_v2(database);
    return std::nullopt;
}

SqliteConnection::SqliteConnection(SqliteConnection&& other) noexcept
    : database_(std::exchange(other.database_, nullptr)) {}

SqliteConnection& SqliteConnection::operator=(SqliteConnection&& other) noexcept {
    if (this != &other) {
        sqlite3_close_v2(database_);
        database_ = std::exchange(other.database_, nullptr);
    }
    return *this;
}

SqliteConnection::~SqliteConnection() { sqlite3_close_v2(database_); }

bool SqliteConnection::execute(const char* sql) {
    return sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string SqliteConnection::errorMessage() const {
    return database_ != nullptr ? sqlite3_errmsg(database_) : "out of memory";
}

}  // namespace tallowen
