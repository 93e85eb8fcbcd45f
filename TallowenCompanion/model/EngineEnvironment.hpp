#pragma once

#include "model/Clock.hpp"
#include "model/LocalCalendar.hpp"

#include <filesystem>

namespace tallowen {

// Everything the engine takes from the world, handed in so tests control it.
struct EngineEnvironment {
    // Where ".claude", ".codex" and the Cursor database are looked up.
    std::filesystem::path homeFolder;
    // "TallowenMac": import state, activations, the terminal's store and settings.
    std::filesystem::path supportFolder;
    LocalCalendar calendar;
    Clock clock;
};

}  // namespace tallowen
