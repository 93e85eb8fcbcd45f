#pragma once

#include "model/UsageTool.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// What one import request came to, for the terminal's report.
struct ImportRunReport {
    enum class Outcome {
        completed,
        // A run of this engine was already under way.
        droppedRunUnderWay,
        // Another process holds the support folder's import lock.
        droppedOtherProcess,
    };

    Outcome outcome = Outcome::completed;
    std::vector<UsageTool> detectedTools;
    int64_t samplesInserted = 0;
    int64_t samplesUpdated = 0;
    int64_t samplesUnchanged = 0;
    // By the one-time purge and by the writing step together.
    int64_t duplicatesRemoved = 0;
    int64_t filesRead = 0;
    int64_t filesReused = 0;
    double elapsedSeconds = 0;
    std::optional<std::string> lastError;

    bool dropped() const { return outcome != Outcome::completed; }
};

}  // namespace tallowen
