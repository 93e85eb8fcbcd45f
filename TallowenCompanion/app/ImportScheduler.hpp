#pragma once

#include "model/Date.hpp"

#include <optional>

namespace tallowen {

// When imports are requested without the user asking: once at start, every
// 15 seconds from then on, and after each recorded application activation.
// The shells own the actual timer and call in; each `true` is one request for
// the importer, which drops it when a run is already under way.
class ImportScheduler {
public:
    static constexpr double intervalSeconds = 15.0;

    // Arms the repeating timer. True (request an import now) on the first
    // start only; a later start changes nothing.
    bool start(Date now);
    bool isStarted() const { return nextDeadline_.has_value(); }

    // When the timer fires next; nothing before start.
    std::optional<Date> nextDeadline() const { return nextDeadline_; }

    // True when the timer has fired by `now`. Firings missed while the caller
    // was busy fold into this one, and the timer keeps its 15-second beat.
    // A clock set back re-arms the timer from `now`.
    bool tick(Date now);

    // The activation watcher recorded a stamp: request an import once started.
    bool activationRecorded() const { return isStarted(); }

private:
    std::optional<Date> nextDeadline_;
};

}  // namespace tallowen
