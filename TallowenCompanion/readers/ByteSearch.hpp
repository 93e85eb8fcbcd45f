#pragma once

#include <string.h>

#include <string_view>

namespace tallowen {

// Whether `needle` occurs in `haystack`, byte for byte. The C library's memmem
// skips ahead far better than a first-byte scan on JSON, where the quote that
// starts most needles is everywhere.
inline bool containsBytes(std::string_view haystack, std::string_view needle) {
    if (haystack.size() < needle.size()) return false;
    return ::memmem(haystack.data(), haystack.size(), needle.data(), needle.size()) != nullptr;
}

}  // namespace tallowen
