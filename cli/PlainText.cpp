#include "PlainText.hpp"

#include <cinttypes>
#include <cstdio>

namespace tallowen::cli {

std::string dollarsText(int64_t cents) {
    const bool negative = cents < 0;
    // Unsigned, so that the most negative count has a magnitude too.
    const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(cents) : static_cast<uint64_t>(cents);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%s%" PRIu64 ".%02" PRIu64, negative ? "-" : "", magnitude / 100,
                  magnitude % 100);
    return buffer;
}

}  // namespace tallowen::cli
