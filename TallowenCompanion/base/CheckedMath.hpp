#pragma once

#include <cstdint>

namespace tallowen {

// Token, cost and water arithmetic must never wrap: an overflow stops the
// process with a message instead of storing a wrong figure. Defined alone in
// FatalArithmetic.cpp, so that a harness that must tell these stops apart
// from real faults can link a stop of its own in its place.
[[noreturn]] void fatalArithmetic(const char* what);

inline int64_t checkedAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) fatalArithmetic("integer overflow in a sum");
    return sum;
}

inline int64_t checkedSubtract(int64_t a, int64_t b) {
    int64_t difference = 0;
    if (__builtin_sub_overflow(a, b, &difference)) fatalArithmetic("integer overflow in a difference");
    return difference;
}

inline void addChecked(int64_t& into, int64_t value) { into = checkedAdd(into, value); }

// Nearest integer, halves away from zero; a value that is not finite or does
// not fit a signed 64-bit integer is fatal.
int64_t roundedToInt64(double value);

}  // namespace tallowen
