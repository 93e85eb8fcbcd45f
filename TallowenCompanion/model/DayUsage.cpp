#include "model/DayUsage.hpp"

#include "base/CheckedMath.hpp"

namespace tallowen {

void keepLaterQuota(std::optional<QuotaSnapshot>& held, const QuotaSnapshot& candidate) {
    if (!held || candidate.at > held->at) held = candidate;
}

void mergeDayUsage(DayUsage& into, const DayUsage& from) {
    into.sessions.insert(from.sessions.begin(), from.sessions.end());
    addChecked(into.requests, from.requests);
    addChecked(into.inputTokens, from.inputTokens);
    addChecked(into.outputTokens, from.outputTokens);
    into.episodeHours.insert(into.episodeHours.end(), from.episodeHours.begin(), from.episodeHours.end());
    addChecked(into.costCents, from.costCents);
    addChecked(into.waterMilliliters, from.waterMilliliters);
    if (from.quota) keepLaterQuota(into.quota, *from.quota);
}

void mergeDayMap(DayMap& into, const DayMap& from) {
    for (const auto& [key, usage] : from) mergeDayUsage(into[key], usage);
}

}  // namespace tallowen
