import Foundation
import Testing
import TallowenKit

@MainActor struct CloudSyncStatusTests {
    @Test func overlappingEventsFailuresAndASuccessRememberedAcrossARestart() {
        let settings = MemorySettings()
        let status = CloudSyncStatus(settings: settings)
        let ended = Date(timeIntervalSinceReferenceDate: 800_000_000)

        status.apply(CloudSyncEvent(kind: .exportEvent, endDate: ended))
        #expect(status.pendingCount == 0)
        #expect(!status.isSyncing)

        status.apply(CloudSyncEvent(kind: .importEvent))
        status.apply(CloudSyncEvent(kind: .exportEvent))
        status.apply(CloudSyncEvent(kind: .setup))
        status.apply(CloudSyncEvent(kind: .setup, endDate: ended, succeeded: true))
        #expect(status.pendingCount == 2)
        status.apply(CloudSyncEvent(kind: .importEvent, endDate: ended, errorDescription: "réseau absent"))
        #expect(status.isSyncing)
        #expect(status.lastErrorDescription == "réseau absent")
        #expect(status.lastSuccessfulSync == nil)
        status.apply(CloudSyncEvent(kind: .exportEvent, endDate: ended, succeeded: true))
        #expect(!status.isSyncing)
        #expect(status.lastErrorDescription == nil)
        #expect(status.lastSuccessfulSync == ended)
        #expect(settings.date(forKey: "cloudSync.lastSuccessAt") == ended)

        let restarted = CloudSyncStatus(settings: settings)
        #expect(restarted.lastSuccessfulSync == ended)
        #expect(restarted.pendingCount == 0)
        #expect(restarted.lastErrorDescription == nil)
    }
}
