import Foundation
import Observation
import TallowenEngine

/// The import engine the app talks to. A run's file work goes to one detached
/// task of utility priority and the one-time purge to one of user-initiated
/// priority; both come back to the main actor as values, where the engine
/// writes the samples and the published properties are refreshed. A request
/// made during a run is dropped.
@MainActor @Observable public final class UsageImporter {
    public private(set) var isImporting = false
    public private(set) var lastImport: Date?
    public private(set) var lastError: String?
    /// Raw tool values, in detection order.
    public private(set) var detectedTools: [String] = []
    public private(set) var todaySessions: Int64 = 0
    public private(set) var todayTokens: Int64 = 0
    public private(set) var todayCostCents: Int64 = 0
    public private(set) var purgeProgress: Double?

    @ObservationIgnored private let engine: EnginePointer
    /// The engine's importer, which a panel session reads its state from.
    var handle: OpaquePointer { engine.pointer }
    @ObservationIgnored private let activity: AppActivityWatcher

    public init(
        folders: EngineFolders, settings: any SettingsStorage, openStore: @escaping SampleStoreOpening,
        activity: AppActivityWatcher
    ) {
        self.activity = activity
        let engineSettings = SettingsBridge.makeHandle(settings)
        defer { tw_settings_free(engineSettings) }
        let importer = tw_importer_create(
            folders.home.path, folders.support.path, engineSettings, StoreBridge.opener(openStore), activity.handle)
        engine = EnginePointer(pointer: importer!)
        refresh()
    }

    deinit {
        tw_importer_free(engine.pointer)
    }

    public func runImport() async {
        guard let work = tw_importer_begin(handle) else { return }
        refresh()
        let fileWork = EnginePointer(pointer: work)
        await Task.detached(priority: .utility) { tw_file_work_run(fileWork.pointer) }.value
        let purge = tw_importer_files_read(handle, work)
        refresh()
        if let purge {
            await runPurge(EnginePointer(pointer: purge))
        }
        _ = takeEngineText(tw_importer_finish(handle, purge))
        refresh()
    }

    private func runPurge(_ purge: EnginePointer) async {
        let relay = PurgeProgressRelay { [weak self] fraction in
            Task { @MainActor in self?.purgeProgressed(fraction) }
        }
        await Task.detached(priority: .userInitiated) {
            withExtendedLifetime(relay) {
                tw_purge_run(purge.pointer, { context, fraction in
                    Unmanaged<PurgeProgressRelay>.fromOpaque(context!).takeUnretainedValue().deliver(fraction)
                }, Unmanaged.passUnretained(relay).toOpaque())
            }
        }.value
    }

    private func purgeProgressed(_ fraction: Double) {
        tw_importer_purge_progressed(handle, fraction)
        refresh()
    }

    /// Takes the engine's published values, assigning only those that changed
    /// so that observers are not woken for nothing.
    private func refresh() {
        guard let json = takeEngineText(tw_importer_state(handle)),
            let state = try? JSONDecoder().decode(ImporterState.self, from: Data(json.utf8))
        else { return }
        if isImporting != state.isImporting { isImporting = state.isImporting }
        if lastImport != state.lastImport { lastImport = state.lastImport }
        if lastError != state.lastError { lastError = state.lastError }
        if detectedTools != state.detectedTools { detectedTools = state.detectedTools }
        if todaySessions != state.todaySessions { todaySessions = state.todaySessions }
        if todayTokens != state.todayTokens { todayTokens = state.todayTokens }
        if todayCostCents != state.todayCostCents { todayCostCents = state.todayCostCents }
        if purgeProgress != state.purgeProgress { purgeProgress = state.purgeProgress }
    }
}
