#pragma once

#include "model/DayUsage.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageEvent.hpp"

#include <string_view>
#include <vector>

namespace tallowen {

// A pause of more than this between two requests of one source starts a new episode.
inline constexpr double episodeGapSeconds = 7200.0;

// Folds one source's events into local days. Each episode counts one session
// ("<sessionId>#<n>") and one start hour on the day it began; requests, tokens,
// cost and water go to the day of each event.
DayMap daysFromEvents(std::vector<UsageEvent> events, std::string_view sessionId, const LocalCalendar& calendar);

}  // namespace tallowen
