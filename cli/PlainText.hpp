#pragma once

#include <cstdint>
#include <string>

namespace tallowen::cli {

// Cents as plain dollars with two decimals ("12.05", "-0.50"), for the
// machine-like tables; the panel uses the locale's money format instead.
std::string dollarsText(int64_t cents);

}  // namespace tallowen::cli
