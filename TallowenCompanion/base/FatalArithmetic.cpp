#include "base/CheckedMath.hpp"

#include <cstdio>
#include <cstdlib>

namespace tallowen {

void fatalArithmetic(const char* what) {
    std::fprintf(stderr, "TallowenCompanion: fatal: %s\n", what);
    std::abort();
}

}  // namespace tallowen
