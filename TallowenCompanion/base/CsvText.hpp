#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// One CSV record (RFC 4180 quoting): fields holding a comma, a double
// quote or a line break are quoted, their quotes doubled; others are as they stand.
// Ended by a line feed, as Unix tools read lines (CSV readers take either ending).
std::string csvRecord(const std::vector<std::string>& fields);

}  // namespace tallowen
