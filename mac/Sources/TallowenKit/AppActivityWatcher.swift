import Foundation
import TallowenEngine

/// Records activations of the desktop AI chat applications through the
/// engine, which keeps the stamps in "app-activations.json" and ignores a
/// repeat within 60 seconds. The Mac shell feeds it the workspace's
/// activation notifications (and the front-most application at start).
@MainActor public final class AppActivityWatcher {
    public static let shared = AppActivityWatcher(folders: .standard())

    public static let watchedBundleIdentifiers: [String] = {
        let json = takeEngineText(tw_activity_watched_bundle_identifiers()) ?? "[]"
        return (try? JSONDecoder().decode([String].self, from: Data(json.utf8))) ?? []
    }()

    /// Called after each recorded stamp.
    public var onRecord: (@MainActor () -> Void)?
    public private(set) var isStarted = false

    /// The engine's stamps, shared with the importer that reads their days.
    let engine: EnginePointer
    var handle: OpaquePointer { engine.pointer }
    private let now: @MainActor () -> Date

    public init(folders: EngineFolders, now: @escaping @MainActor () -> Date = Date.init) {
        try? FileManager.default.createDirectory(at: folders.support, withIntermediateDirectories: true)
        engine = EnginePointer(pointer: tw_activity_create(folders.support.path)!)
        self.now = now
    }

    deinit {
        tw_activity_free(engine.pointer)
    }

    /// Begins watching: stores the callback. False, changing nothing, when
    /// already started.
    @discardableResult
    public func start(onRecord: @escaping @MainActor () -> Void) -> Bool {
        guard !isStarted else { return false }
        isStarted = true
        self.onRecord = onRecord
        return true
    }

    /// An application came to the front; unwatched ones and repeats are dropped by the engine.
    public func record(bundleIdentifier: String) {
        let recorded = tw_activity_record(handle, bundleIdentifier, now().timeIntervalSinceReferenceDate)
        if recorded { onRecord?() }
    }
}
