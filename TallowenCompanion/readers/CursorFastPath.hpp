#pragma once

#include "readers/CursorReader.hpp"

#include <optional>
#include <sqlite3.h>

namespace tallowen {

// Cursor's rows read without json_extract, which parses every message's whole
// text once per expression: one pass over the table picks the rows of both
// reference queries by the same WHERE clauses and the same key expressions,
// and simdjson takes `createdAt` and the token counts from each value. A
// value that simdjson cannot settle exactly as SQLite would (text it rejects,
// escapes in names, numbers that are not 64-bit integers, values that are not
// text) is handed to json_extract itself. Nothing when even that cannot
// settle the result, such as a sum that would leave 64 bits or a query that
// stops short: the reference queries then decide.
std::optional<CursorRows> readCursorRowsFast(sqlite3* database);

}  // namespace tallowen
