// Stands in for the engine's fatal arithmetic stop: the overflows the product
// stops on are expected of hostile input, so here they end the one input and
// are counted, while every other failure still crashes and is reported.

#include "base/CheckedMath.hpp"

#include <cstdio>
#include <cstdlib>

namespace tallowen {
namespace fuzz {

struct FatalStop {
    const char* what;
};

long fatalStops = 0;

}  // namespace fuzz

void fatalArithmetic(const char* what) { throw fuzz::FatalStop{what}; }

}  // namespace tallowen

namespace tallowen::fuzz {

void runCountingFatalStops(void (*check)(const char*, size_t), const char* data, size_t size) {
    static const bool reportsAtExit = [] {
        std::atexit([] { std::fprintf(stderr, "fatal overflow stops (expected): %ld\n", fatalStops); });
        return true;
    }();
    (void)reportsAtExit;
    try {
        check(data, size);
    } catch (const FatalStop&) {
        ++fatalStops;
    }
}

}  // namespace tallowen::fuzz
