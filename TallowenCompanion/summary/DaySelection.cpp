#include "summary/DaySelection.hpp"

#include "summary/OneSamplePerSlot.hpp"

#include <algorithm>
#include <cctype>

namespace tallowen {

bool isDayKeyText(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i != 4 && i != 7 && !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
    return true;
}

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
