import Foundation
import Testing
@testable import TallowenKit

@MainActor struct ImportSchedulerTests {
    let time = ManualSchedulerClock()
    let support = FileManager.default.temporaryDirectory.appendingPathComponent("tallowen-\(UUID().uuidString)")

    @Test func requestsAtStartEveryFifteenSecondsAndOnEachRecordedActivation() {
        defer { try? FileManager.default.removeItem(at: support) }
        let watcher = AppActivityWatcher(folders: EngineFolders(home: support, support: support)) { [time] in time.now }
        let scheduler = ImportScheduler()
        final class Counter { var requests = 0 }
        let counter = Counter()
        scheduler.start(clock: time.clock, watcher: watcher) { counter.requests += 1 }
        scheduler.start(clock: time.clock, watcher: watcher) { counter.requests += 100 }
        #expect(counter.requests == 1)
        #expect(time.timerCount == 1)
        #expect(watcher.isStarted)

        time.advance(by: 14.9)
        #expect(counter.requests == 1)
        time.advance(by: 0.1)
        #expect(counter.requests == 2)
        time.advance(by: 45)
        #expect(counter.requests == 5)

        // An activation requests an import at once; a repeat within 60 s is no new stamp.
        watcher.record(bundleIdentifier: "com.openai.chat")
        #expect(counter.requests == 6)
        watcher.record(bundleIdentifier: "com.openai.chat")
        watcher.record(bundleIdentifier: "com.apple.Safari")
        #expect(counter.requests == 6)
        time.advance(by: 5)
        watcher.record(bundleIdentifier: "com.anthropic.claudefordesktop")
        #expect(counter.requests == 7)
        #expect(AppActivityWatcher.watchedBundleIdentifiers.count == 3)
    }
}
