import Foundation
import Testing
@testable import TallowenKit

@MainActor struct PanelSessionTests {
    @Test func framesOfARealImportDecodeWithTheShellsOptionsAndStates() async throws {
        let usageHome = try UsageHome()
        defer { usageHome.remove() }
        let store = InMemorySampleStore()
        let settings = MemorySettings()
        let folders = EngineFolders(home: usageHome.home, support: usageHome.support)
        let importer = UsageImporter(
            folders: folders, settings: settings, openStore: store.opening,
            activity: AppActivityWatcher(folders: folders))
        let session = PanelSession(
            formatter: FoundationLocaleFormatter(locale: Locale(identifier: "fr_FR")),
            options: PanelOptions(showsCloudLines: true, hasUpdater: false, showsLoginItem: true))

        let empty = session.frame(at: Date())
        #expect(empty.today.requestsText == "00")

        await importer.runImport()
        // The logs are of March 2025: their quotas are stale, and only this fresh reading shows.
        let quota = SampleRecord(
            dayKey: "2025-03-16", tool: "codex", quotaPrimaryPercent: 40, quotaPlan: "plus", updatedAt: Date())
        session.samplesChanged(store.saved + [quota])
        session.importerChanged(importer)
        session.syncChanged(CloudSyncStatus(settings: settings), cloudEnvironment: "Development")
        session.loginItemChanged(true)
        let frame = session.frame(at: Date())
        #expect(frame.detectedTools.text.contains("CODEX"))
        #expect(frame.cloudWarning?.kind == "never")
        #expect(frame.loginItem?.isOn == true)
        #expect(frame.updateButton == nil)
        #expect(frame.cleaning == nil)
        #expect(frame.quotas?.blocks.map(\.tool) == ["codex"])
        #expect(frame.quotas?.blocks.first?.bars.first?.percentText == "40 %")
        #expect(frame.footer.developmentBadge == "DEVELOPMENT")
        #expect(frame.footer.lastImportText?.hasPrefix("Import ") == true)
        #expect(frame.today.bottleRows.count == 44)
        #expect(session.nextFrameDate(after: Date()) > Date().addingTimeInterval(-1))

        session.storeFailed("Store illisible : base verrouillée")
        #expect(session.frame(at: Date()).errorLine == "Store illisible : base verrouillée")
    }
}
