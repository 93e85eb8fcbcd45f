#pragma once

#include <filesystem>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tallowen::testing {

// Writes a Cursor-like state database: the key-value table with the given rows.
inline void writeCursorDatabase(const std::filesystem::path& path,
                                const std::vector<std::pair<std::string, std::string>>& rows) {
    std::filesystem::create_directories(path.parent_path());
    sqlite3* database = nullptr;
    if (sqlite3_open(path.c_str(), &database) != SQLITE_OK) {
        sqlite3_close(database);
        throw std::runtime_error("cannot create " + path.string());
    }
    sqlite3_exec(database, "CREATE TABLE cursorDiskKV (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB)", nullptr,
                 nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, "INSERT INTO cursorDiskKV VALUES (?, ?)", -1, &insert, nullptr);
    for (const auto& [key, value] : rows) {
        sqlite3_bind_text(insert, 1, key.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 2, value.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_close(database);
}

inline std::string cursorTokenCount(long long inputTokens, long long outputTokens) {
    return R"({"_v":2,"type":2,"text":"…","tokenCount":{"inputTokens":)" + std::to_string(inputTokens) +
           R"(,"outputTokens":)" + std::to_string(outputTokens) + "}}";
}

inline std::string cursorCreatedAt(long long unixMilliseconds) {
    return R"({"_v":3,"createdAt":)" + std::to_string(unixMilliseconds) + "}";
}

}  // namespace tallowen::testing
