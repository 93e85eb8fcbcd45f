import Foundation
import TallowenEngine

/// Requests an import once at start, every 15 seconds on the main run loop
/// and after each activation the watcher records. The engine's policy decides
/// each request; the importer drops one made during a run.
@MainActor public final class ImportScheduler {
    public static let shared = ImportScheduler()

    private let engine = EnginePointer(pointer: tw_scheduler_create())
    private var policy: OpaquePointer { engine.pointer }
    private var timer: AnyObject?

    public init() {}

    deinit {
        tw_scheduler_free(engine.pointer)
    }

    /// Idempotent: a second start changes nothing.
    public func start(importer: UsageImporter, clock: SchedulerClock = .system, watcher: AppActivityWatcher = .shared) {
        start(clock: clock, watcher: watcher) { Task { await importer.runImport() } }
    }

    func start(clock: SchedulerClock, watcher: AppActivityWatcher, request: @escaping @MainActor () -> Void) {
        guard tw_scheduler_start(policy, clock.now().timeIntervalSinceReferenceDate) else { return }
        request()
        let policy = self.policy
        _ = watcher.start {
            if tw_scheduler_activation_recorded(policy) { request() }
        }
        timer = clock.scheduleRepeating(tw_scheduler_interval_seconds()) {
            if tw_scheduler_tick(policy, clock.now().timeIntervalSinceReferenceDate) { request() }
        }
    }
}
