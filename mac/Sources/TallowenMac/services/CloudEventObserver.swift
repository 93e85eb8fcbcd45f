import CoreData
import Foundation
import TallowenKit

/// Turns the store's CloudKit mirroring events into values for the engine's sync
/// state machine, which decides what counts and what the menu says about it.
@MainActor
final class CloudEventObserver {
    static let shared = CloudEventObserver()

    /// The notification-centre registration; never removed.
    private var observer: (any NSObjectProtocol)?

    private init() {}

    func start(feeding status: CloudSyncStatus) {
        guard observer == nil else { return }
        observer = NotificationCenter.default.addObserver(
            forName: NSPersistentCloudKitContainer.eventChangedNotification,
            object: nil,
            queue: .main
        ) { [weak status] notification in
            guard
                let status,
                let event = notification.userInfo?[NSPersistentCloudKitContainer.eventNotificationUserInfoKey]
                    as? NSPersistentCloudKitContainer.Event
            else { return }
            let value = CloudEventObserver.syncEvent(from: event)
            // Delivered on the main queue: applied at once, so that an event's
            // start and end reach the state machine in the order they came.
            MainActor.assumeIsolated {
                status.apply(value)
            }
        }
    }

    nonisolated private static func syncEvent(from event: NSPersistentCloudKitContainer.Event) -> CloudSyncEvent {
        let kind: CloudSyncEvent.Kind
        switch event.type {
        case .setup:
            kind = .setup
        case .`import`:
            kind = .importEvent
        case .export:
            kind = .exportEvent
        @unknown default:
            kind = .other
        }
        return CloudSyncEvent(
            kind: kind,
            endDate: event.endDate,
            succeeded: event.succeeded,
            errorDescription: event.error?.localizedDescription
        )
    }
}
