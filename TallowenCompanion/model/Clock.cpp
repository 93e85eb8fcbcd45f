#include "model/Clock.hpp"

#include <chrono>

namespace tallowen {

Clock systemClock() {
    return [] {
        const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
        return Date::fromUnixSeconds(std::chrono::duration<double>(sinceEpoch).count());
    };
}

}  // namespace tallowen
