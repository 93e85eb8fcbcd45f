#include "summary/BottleLevel.hpp"

namespace tallowen {

std::optional<BottleLevel> bottleLevelFromRawValue(int64_t raw) {
    for (const BottleLevel level : allBottleLevels)
        if (rawValue(level) == raw) return level;
    return std::nullopt;
}

BottleLevel bottleLevel(int64_t todayWaterMilliliters, int64_t dayReferenceMilliliters) {
    if (todayWaterMilliliters < 1) return BottleLevel::empty;
    if (dayReferenceMilliliters < 1) return BottleLevel::medium;
    const double ratio = static_cast<double>(todayWaterMilliliters) / static_cast<double>(dayReferenceMilliliters);
    if (ratio < 0.5) return BottleLevel::low;
    if (ratio < 1.5) return BottleLevel::medium;
    if (ratio < 3.0) return BottleLevel::full;
    return BottleLevel::overflow;
}

BottleLevel bottleLevel(const ConsumptionSummary& summary) {
    return bottleLevel(summary.todayWaterMilliliters, summary.dayReferenceMilliliters);
}

std::string_view comparisonLine(BottleLevel level) {
    switch (level) {
        case BottleLevel::empty: return "RIEN AUJOURD'HUI";
        case BottleLevel::low: return "SOUS TA MOYENNE";
        case BottleLevel::medium: return "DANS TA MOYENNE";
        case BottleLevel::full: return "AU-DESSUS DE TA MOYENNE";
        case BottleLevel::overflow: return "LE TRIPLE DE TA MOYENNE";
    }
    return "";
}

std::string_view waterComparisonLine(const ConsumptionSummary& summary) {
    if (summary.dayReferenceMilliliters < 1) return "PREMIERS JOURS MESURÉS";
    return comparisonLine(bottleLevel(summary));
}

}  // namespace tallowen
