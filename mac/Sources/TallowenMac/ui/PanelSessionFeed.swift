import SwiftUI
import TallowenKit

/// Hands the engine's panel session every input the moment it changes: the
/// store's samples, the importer's published state, the cloud sync state and
/// the login item. After each hand-over the panel is told to draw at once.
struct PanelSessionFeed: ViewModifier {
    let session: PanelSession
    let records: [SampleRecord]
    let importer: UsageImporter
    let syncStatus: CloudSyncStatus
    let launchAtLogin: LaunchAtLogin
    let cloudEnvironment: String?
    let inputsChanged: @MainActor () -> Void

    func body(content: Content) -> some View {
        content
            .onChange(of: records, initial: true) {
                session.samplesChanged(records)
                inputsChanged()
            }
            .onChange(of: importer.isImporting, initial: true) { feedImporter() }
            .onChange(of: importer.lastImport) { feedImporter() }
            .onChange(of: importer.lastError) { feedImporter() }
            .onChange(of: importer.detectedTools) { feedImporter() }
            .onChange(of: importer.purgeProgress) { feedImporter() }
            .onChange(of: syncStatus.isSyncing, initial: true) { feedSync() }
            .onChange(of: syncStatus.lastSuccessfulSync) { feedSync() }
            .onAppear {
                // The login item can change in System Settings while the panel
                // is closed, so its state is read each time the panel opens.
                session.loginItemChanged(launchAtLogin.isEnabled)
                inputsChanged()
            }
    }

    private func feedImporter() {
        session.importerChanged(importer)
        inputsChanged()
    }

    private func feedSync() {
        session.syncChanged(syncStatus, cloudEnvironment: cloudEnvironment)
        inputsChanged()
    }
}
