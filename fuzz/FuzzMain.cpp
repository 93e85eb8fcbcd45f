// One libFuzzer target; TALLOWEN_FUZZ_CHECK names the check of FuzzTargets.hpp it runs.

#include "FuzzTargets.hpp"

#include <cstdlib>
#include <ctime>

namespace tallowen::fuzz {
void runCountingFatalStops(void (*check)(const char*, size_t), const char* data, size_t size);
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Day keys and hours come from the process's zone: one with summer time.
    ::setenv("TZ", "Europe/Paris", 1);
    ::tzset();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tallowen::fuzz::runCountingFatalStops(
        [](const char* bytes, size_t length) { tallowen::fuzz::TALLOWEN_FUZZ_CHECK(std::string_view(bytes, length)); },
        reinterpret_cast<const char*>(data), size);
    return 0;
}
