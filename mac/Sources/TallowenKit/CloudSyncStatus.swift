import Foundation
import Observation
import TallowenEngine

/// Whether the store's CloudKit mirroring works, followed from its events by
/// the engine's state machine. The last success outlives the process under
/// "cloudSync.lastSuccessAt"; the count of running events and the last error do not.
@MainActor @Observable public final class CloudSyncStatus {
    public static let shared = CloudSyncStatus(settings: UserDefaultsSettings())

    public private(set) var lastSuccessfulSync: Date?
    public private(set) var lastErrorDescription: String?
    public private(set) var isSyncing = false
    public private(set) var pendingCount: Int64 = 0

    @ObservationIgnored private let engine: EnginePointer
    private var handle: OpaquePointer { engine.pointer }

    public init(settings: any SettingsStorage) {
        let engineSettings = SettingsBridge.makeHandle(settings)
        defer { tw_settings_free(engineSettings) }
        engine = EnginePointer(pointer: tw_sync_status_create(engineSettings)!)
        refresh()
    }

    deinit {
        tw_sync_status_free(engine.pointer)
    }

    public func apply(_ event: CloudSyncEvent) {
        let kind: tw_cloud_event_kind
        switch event.kind {
        case .setup: kind = TW_CLOUD_EVENT_SETUP
        case .importEvent: kind = TW_CLOUD_EVENT_IMPORT
        case .exportEvent: kind = TW_CLOUD_EVENT_EXPORT
        case .other: kind = TW_CLOUD_EVENT_OTHER
        }
        let apply = { (description: UnsafePointer<CChar>?) in
            var value = tw_cloud_event(
                kind: kind, has_end_date: event.endDate != nil,
                end_date: event.endDate?.timeIntervalSinceReferenceDate ?? 0,
                succeeded: event.succeeded, error_description: description)
            tw_sync_status_apply(self.handle, &value)
        }
        if let description = event.errorDescription {
            description.withCString { apply($0) }
        } else {
            apply(nil)
        }
        refresh()
    }

    private func refresh() {
        var date = 0.0
        let last = tw_sync_status_last_successful_sync(handle, &date)
            ? Date(timeIntervalSinceReferenceDate: date) : nil
        if lastSuccessfulSync != last { lastSuccessfulSync = last }
        let error = takeEngineText(tw_sync_status_last_error_description(handle))
        if lastErrorDescription != error { lastErrorDescription = error }
        let syncing = tw_sync_status_is_syncing(handle)
        if isSyncing != syncing { isSyncing = syncing }
        let pending = tw_sync_status_pending_count(handle)
        if pendingCount != pending { pendingCount = pending }
    }
}
