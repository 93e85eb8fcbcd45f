import Foundation

/// The clock and repeating timer the import scheduler runs on: the main run
/// loop in the app, a hand-driven clock in tests.
public struct SchedulerClock: Sendable {
    public var now: @MainActor @Sendable () -> Date
    /// Schedules `fire` every `interval` seconds; the returned token keeps the timer alive.
    public var scheduleRepeating:
        @MainActor @Sendable (_ interval: TimeInterval, _ fire: @escaping @MainActor () -> Void) -> AnyObject

    public init(
        now: @escaping @MainActor @Sendable () -> Date,
        scheduleRepeating: @escaping @MainActor @Sendable (TimeInterval, @escaping @MainActor () -> Void) -> AnyObject
    ) {
        self.now = now
        self.scheduleRepeating = scheduleRepeating
    }

    /// The wall clock and a repeating timer on the main run loop.
    public static let system = SchedulerClock(now: { Date() }) { interval, fire in
        let action = MainActorAction(fire)
        return Timer.scheduledTimer(withTimeInterval: interval, repeats: true) { _ in
            MainActor.assumeIsolated { action.run() }
        }
    }
}

/// A main-actor closure carried through the timer's sendable block; the main
/// run loop only ever calls it on the main thread.
private final class MainActorAction: @unchecked Sendable {
    private let action: @MainActor () -> Void

    init(_ action: @escaping @MainActor () -> Void) {
        self.action = action
    }

    @MainActor func run() {
        action()
    }
}
