import AppKit
import TallowenKit

/// Feeds the engine's activity watcher with the applications the user brings to
/// the front. The watcher debounces and keeps the stamps; this only listens.
@MainActor
final class WorkspaceActivationObserver {
    static let shared = WorkspaceActivationObserver()

    /// The workspace registration; it lasts for the life of the process.
    private var observer: (any NSObjectProtocol)?

    private init() {}

    /// Registers once, then records the application already in front, so that a
    /// chat app open before launch counts too.
    func start() {
        guard observer == nil else { return }
        let workspace = NSWorkspace.shared
        observer = workspace.notificationCenter.addObserver(
            forName: NSWorkspace.didActivateApplicationNotification,
            object: nil,
            queue: .main
        ) { notification in
            guard
                let application = notification.userInfo?[NSWorkspace.applicationUserInfoKey] as? NSRunningApplication,
                let bundleIdentifier = application.bundleIdentifier
            else { return }
            // Delivered on the main queue: stamped at the activation itself.
            MainActor.assumeIsolated {
                WorkspaceActivationObserver.record(bundleIdentifier)
            }
        }
        if let bundleIdentifier = workspace.frontmostApplication?.bundleIdentifier {
            Self.record(bundleIdentifier)
        }
    }

    private static func record(_ bundleIdentifier: String) {
        guard AppActivityWatcher.watchedBundleIdentifiers.contains(bundleIdentifier) else { return }
        AppActivityWatcher.shared.record(bundleIdentifier: bundleIdentifier)
    }
}
