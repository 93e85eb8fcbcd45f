import Foundation
@testable import TallowenKit

/// A scheduler clock moved by hand: advancing fires the repeating timer at
/// each of its beats on the way, as the main run loop would.
@MainActor final class ManualSchedulerClock {
    private(set) var now = Date(timeIntervalSinceReferenceDate: 800_000_000)
    private var timers: [(interval: TimeInterval, next: Date, fire: @MainActor () -> Void)] = []

    var clock: SchedulerClock {
        SchedulerClock(now: { [unowned self] in self.now }) { [unowned self] interval, fire in
            self.timers.append((interval, self.now + interval, fire))
            return NSObject()
        }
    }

    var timerCount: Int { timers.count }

    func advance(by seconds: TimeInterval) {
        let end = now + seconds
        while let index = timers.indices.min(by: { timers[$0].next < timers[$1].next }), timers[index].next <= end {
            now = timers[index].next
            timers[index].next = now + timers[index].interval
            timers[index].fire()
        }
        now = end
    }
}
