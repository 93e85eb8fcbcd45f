#pragma once

#include "model/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tallowen {

// A per-day note record of the shared store. This computer never creates or
// reads one; it only carries the type in the store's schema.
struct DayRecord {
    std::string dayKey;
    int64_t count = 0;
    Date updatedAt;
    std::optional<std::string> note;
    std::optional<Date> validatedAt;
    std::string dayType = "normal";
    int64_t extraPersonal = 0;

    std::string persistentId;

    static DayRecord created(Date now) {
        DayRecord record;
        record.updatedAt = now;
        return record;
    }
};

}  // namespace tallowen
