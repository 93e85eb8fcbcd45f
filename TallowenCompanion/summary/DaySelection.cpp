#include "summary/DaySelection.hpp"

#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>

namespace tallowen {

std::vector<UsageSample> selectedDays(const std::vector<UsageSample>& stored, const DaySelection& selection) {
    std::vector<UsageSample> samples = oneSamplePerSlot(stored);
    std::erase_if(samples, [&](const UsageSample& sample) {
        return (selection.since && sample.dayKey < *selection.since) ||
               (selection.until && sample.dayKey > *selection.until) ||
               (selection.tool && sample.tool != *selection.tool);
    });
    return samples;
}

}  // namespace tallowen
