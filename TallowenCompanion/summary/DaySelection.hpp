#pragma once

#include "model/UsageSample.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// Which stored days to list: from and to a day key, both included, and of one
// tool (by raw value, so a phone tool this version does not know is found too).
struct DaySelection {
    std::optional<std::string> since;
    std::optional<std::string> until;
    std::optional<std::string> tool;
};

// Whether a text is written as a day key: four, two and two digits between hyphens.
bool isDayKeyText(std::string_view text);

// The stored samples reduced to one per day and tool as the panel reads them,
// then the selected ones, by day key then tool.
std::vector<UsageSample> selectedDays(const std::vector<UsageSample>& stored, const DaySelection& selection);

}  // namespace tallowen
