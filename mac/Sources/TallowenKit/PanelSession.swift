import Foundation
import TallowenEngine

/// The engine's panel session: the shell forwards what changed and draws the
/// frames it gets back. Every text, role and timing is decided in the engine.
@MainActor public final class PanelSession {
    private let engine: EnginePointer
    private var handle: OpaquePointer { engine.pointer }
    private let formatter: FormatterBridge
    private let encoder = JSONEncoder()
    private var lastFrame: PanelFrame?

    public init(formatter: FoundationLocaleFormatter, options: PanelOptions, started: Date = Date()) {
        self.formatter = FormatterBridge(formatter)
        let engineOptions = tw_panel_options(
            shows_cloud_lines: options.showsCloudLines, has_updater: options.hasUpdater,
            shows_login_item: options.showsLoginItem)
        engine = EnginePointer(
            pointer: tw_panel_session_create(self.formatter.handle, engineOptions, started.timeIntervalSinceReferenceDate)!)
    }

    deinit {
        tw_panel_session_free(engine.pointer)
    }

    /// The store's samples, as read.
    public func samplesChanged(_ samples: [SampleRecord]) {
        guard let data = try? encoder.encode(samples) else { return }
        _ = tw_panel_session_samples_reloaded(handle, String(decoding: data, as: UTF8.self))
    }

    /// A failed read of the store; its text stands where the last error goes.
    public func storeFailed(_ errorText: String) {
        tw_panel_session_store_failed(handle, errorText)
    }

    public func importerChanged(_ importer: UsageImporter) {
        tw_panel_session_importer_changed(handle, importer.handle)
    }

    /// `cloudEnvironment`: the container-environment entitlement's value, nil when unknown.
    public func syncChanged(_ status: CloudSyncStatus, cloudEnvironment: String?) {
        let last = status.lastSuccessfulSync?.timeIntervalSinceReferenceDate
        tw_panel_session_sync_changed(handle, status.isSyncing, last != nil, last ?? 0, cloudEnvironment)
    }

    public func loginItemChanged(_ enabled: Bool) {
        tw_panel_session_login_item_changed(handle, enabled)
    }

    /// Everything to draw at `date`.
    public func frame(at date: Date) -> PanelFrame {
        let json = takeEngineText(tw_panel_session_frame(handle, date.timeIntervalSinceReferenceDate))
        if let json, let frame = try? JSONDecoder().decode(PanelFrame.self, from: Data(json.utf8)) {
            lastFrame = frame
            return frame
        }
        // The engine's frame always decodes (the tests hold it to that); should
        // it not, the last frame stays on screen.
        guard let lastFrame else { preconditionFailure("the engine's panel frame does not decode: \(json ?? "")") }
        return lastFrame
    }

    /// When something on screen next changes.
    public func nextFrameDate(after date: Date) -> Date {
        Date(timeIntervalSinceReferenceDate: tw_panel_session_next_frame_date(handle, date.timeIntervalSinceReferenceDate))
    }
}
