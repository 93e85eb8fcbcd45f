#include "base/SqliteStatement.hpp"

#include <sqlite3.h>

#include <utility>

namespace tallowen {

std::optional<SqliteStatement> SqliteStatement::prepare(sqlite3* database, const char* sql, bool persistent) {
    sqlite3_stmt* statement = nullptr;
    const unsigned flags = persistent ? SQLITE_PREPARE_PERSISTENT : 0;
    if (sqlite3_prepare_v3(database, sql, -1, flags, &statement, nullptr) != SQLITE_OK || statement == nullptr) {
        sqlite3_finalize(statement);
        return std::nullopt;
    }
    return SqliteStatement(statement);
}

SqliteStatement::SqliteStatement(SqliteStatement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr)) {}

SqliteStatement& SqliteStatement::operator=(SqliteStatement&& other) noexcept {
    if (this != &other) {
        sqlite3_finalize(statement_);
        statement_ = std::exchange(other.statement_, nullptr);
    }
    return *this;
}

SqliteStatement::~SqliteStatement() { sqlite3_finalize(statement_); }

int SqliteStatement::step() { return sqlite3_step(statement_); }

void SqliteStatement::reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

int SqliteStatement::bind(int index, std::string_view text) {
    return sqlite3_bind_text64(statement_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int SqliteStatement::bind(int index, int64_t value) { return sqlite3_bind_int64(statement_, index, value); }

int SqliteStatement::bind(int index, double value) { return sqlite3_bind_double(statement_, index, value); }

int SqliteStatement::bindNull(int index) { return sqlite3_bind_null(statement_, index); }

bool SqliteStatement::isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

int64_t SqliteStatement::integer(int column) const { return sqlite3_column_int64(statement_, column); }

double SqliteStatement::real(int column) const { return sqlite3_column_double(statement_, column); }

std::optional<std::string> SqliteStatement::text(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (bytes == nullptr) return std::nullopt;
    return std::string(bytes, static_cast<size_t>(sqlite3_column_bytes(statement_, column)));
}

}  // namespace tallowen
