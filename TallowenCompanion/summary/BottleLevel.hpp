#pragma once

#include "summary/ConsumptionSummary.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowen {

// How today's water compares with the user's usual day; fills the pixel
// bottle and picks the menu's comparison line.
enum class BottleLevel : int {
    empty = 0,     // no water today
    low = 1,       // under the user's average
    medium = 2,    // within the average, or no reference yet
    full = 3,      // above the average
    overflow = 4,  // three times the average or more
};

inline constexpr std::array<BottleLevel, 5> allBottleLevels = {
    BottleLevel::empty, BottleLevel::low, BottleLevel::medium, BottleLevel::full, BottleLevel::overflow,
};

constexpr int rawValue(BottleLevel level) { return static_cast<int>(level); }
// 0 to 4; nothing for any other value.
std::optional<BottleLevel> bottleLevelFromRawValue(int64_t raw);

// Today's water against the per-day reference: ratios of 0.5, 1.5 and 3.0
// already belong to the higher level; without a reference any water is medium.
BottleLevel bottleLevel(int64_t todayWaterMilliliters, int64_t dayReferenceMilliliters);
BottleLevel bottleLevel(const ConsumptionSummary& summary);

// The comparison line of a level ("RIEN AUJOURD'HUI", ...).
std::string_view comparisonLine(BottleLevel level);

// The line under the water figure. Without a reference it reads "PREMIERS
// JOURS MESURÉS" whatever today holds; this is tested before the level, so a
// first day without water does not read "RIEN AUJOURD'HUI".
std::string_view waterComparisonLine(const ConsumptionSummary& summary);

}  // namespace tallowen
