#pragma once

#include "model/UsageSample.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// Cents as plain dollars with two decimals ("12.05", "-0.50"), for the
// machine-like tables; the panel uses the locale's money format instead.
std::string dollarsText(int64_t cents);

// One line of the day tables of `scan` and `days`, columns two spaces apart:
// the day, the tool left-aligned in `toolColumns`, six figures right-aligned
// (sessions, requests, input, output, cost, water), then `last` as it stands;
// no trailing blanks.
std::string dayTableLine(std::string_view day, std::string_view tool, int toolColumns,
                         const std::array<std::string, 6>& figures, std::string_view last);
// The line of a sample, its cost in dollars.
std::string dayTableLine(const UsageSample& sample, int toolColumns, std::string_view last);

// The stored days as a table with a header, each ended by its updatedAt in ISO 8601.
std::string daysTable(const std::vector<UsageSample>& samples);

}  // namespace tallowen
