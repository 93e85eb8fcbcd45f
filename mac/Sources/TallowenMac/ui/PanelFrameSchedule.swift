import SwiftUI

/// A timeline whose next date is always "the last one plus what the engine
/// said": fast while the title types, once a second when the panel is idle.
/// The dates are produced lazily, so each step reads the latest interval.
struct PanelFrameSchedule: TimelineSchedule {
    let clock: PanelFrameClock

    /// A floor under the engine's interval, so that a zero can never spin the
    /// main thread; the low-frequency mode (an inactive display) redraws at
    /// most once a second.
    private static let shortestStepSeconds = 0.02
    private static let lowFrequencyStepSeconds = 1.0

    func entries(from startDate: Date, mode: TimelineScheduleMode) -> Entries {
        Entries(upcoming: startDate, clock: clock, lowFrequency: mode == .lowFrequency)
    }

    struct Entries: Sequence, IteratorProtocol {
        var upcoming: Date
        let clock: PanelFrameClock
        let lowFrequency: Bool

        mutating func next() -> Date? {
            let date = upcoming
            var step = max(clock.intervalSeconds, PanelFrameSchedule.shortestStepSeconds)
            if lowFrequency {
                step = max(step, PanelFrameSchedule.lowFrequencyStepSeconds)
            }
            upcoming = date.addingTimeInterval(step)
            return date
        }
    }
}
