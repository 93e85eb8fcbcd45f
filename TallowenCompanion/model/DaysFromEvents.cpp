#include "model/DaysFromEvents.hpp"

#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"

#include <algorithm>
#include <string>

namespace tallowen {

DayMap daysFromEvents(std::vector<UsageEvent> events, std::string_view sessionId, const LocalCalendar& calendar) {
    DayMap days;
    if (events.empty()) return days;
    std::stable_sort(events.begin(), events.end(),
                     [](const UsageEvent& a, const UsageEvent& b) { return a.date < b.date; });

    int64_t episode = 0;
    std::string episodeDayKey = dayKey(events.front().date, calendar);
    Date previous = events.front().date;
    bool first = true;
    for (const UsageEvent& event : events) {
        const LocalDateParts parts = calendar.parts(event.date);
        std::string eventDayKey = dayKey(parts.year, parts.month, parts.day);
        if (!first && event.date.secondsSince(previous) > episodeGapSeconds) {
            ++episode;
            episodeDayKey = eventDayKey;
        }
        first = false;
        previous = event.date;

        DayUsage& eventDay = days[eventDayKey];
        addChecked(eventDay.requests, 1);
        addChecked(eventDay.inputTokens, event.inputTokens);
        addChecked(eventDay.outputTokens, event.outputTokens);
        addChecked(eventDay.costCents, event.costCents);
        addChecked(eventDay.waterMilliliters, event.waterMilliliters);

        DayUsage& episodeDay = days[episodeDayKey];
        std::string session(sessionId);
        session += '#';
        session += std::to_string(episode);
        if (episodeDay.sessions.insert(std::move(session)).second) episodeDay.episodeHours.push_back(parts.hour);
    }
    return days;
}

}  // namespace tallowen
