#pragma once

#include "model/DayUsage.hpp"
#include "model/Date.hpp"
#include "store/SampleStore.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tallowen {

struct SampleWriteOutcome {
    int64_t inserted = 0;
    int64_t updated = 0;
    int64_t unchanged = 0;
    // Duplicates met while indexing the stored samples, deleted on the way.
    int64_t duplicatesRemoved = 0;
    // Set when the store could not be read ("Store illisible : …") or saved.
    std::optional<std::string> error;
};

// Writes one sample per (day, tool) of `results`: unchanged days are not
// touched, changed ones are rewritten and stamped `now`, missing ones inserted;
// the store is saved once.
SampleWriteOutcome writeSamples(SampleStore& store, const ToolResults& results, Date now);

}  // namespace tallowen
