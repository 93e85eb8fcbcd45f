import Foundation
import Testing
@testable import TallowenKit

@MainActor struct UsageImporterTests {
    let usageHome: UsageHome
    let store = InMemorySampleStore()
    let settings = MemorySettings()
    let importer: UsageImporter

    init() throws {
        usageHome = try UsageHome()
        let folders = EngineFolders(home: usageHome.home, support: usageHome.support)
        importer = UsageImporter(
            folders: folders, settings: settings, openStore: store.opening,
            activity: AppActivityWatcher(folders: folders))
    }

    /// The stored samples by day key then tool.
    var stored: [SampleRecord] {
        store.saved.sorted { ($0.dayKey, $0.tool) < ($1.dayKey, $1.tool) }
    }

    @Test(.enabled(if: ScanCommand.isBuilt, "build the tallowen command with CMake first"))
    func aWholeImportStoresWhatTheTerminalScanReadsAndASecondOneTouchesNothing() async throws {
        defer { usageHome.remove() }
        await importer.runImport()
        #expect(importer.lastError == nil)
        #expect(importer.lastImport != nil)
        #expect(importer.isImporting == false)

        let scan = try ScanCommand.run(home: usageHome.home, data: usageHome.root.appendingPathComponent("scan"))
        #expect(importer.detectedTools == scan.detected)
        #expect(scan.samples.count == 5)
        #expect(stored == zip(stored, scan.samples).map { $1.record(id: $0.id, updatedAt: $0.updatedAt) })
        #expect(stored.contains { $0.tool == "codex" && $0.quotaPlan == "pro" })

        let before = store.saved
        let firstImport = importer.lastImport
        await importer.runImport()
        #expect(store.saved == before)
        #expect(importer.lastImport != firstImport)
        #expect(settings.date(forKey: "lastImportDate") == importer.lastImport)
    }

    @Test func aRequestDuringARunIsDropped() async {
        defer { usageHome.remove() }
        let first = Task { await importer.runImport() }
        while !importer.isImporting { await Task.yield() }
        await importer.runImport()
        #expect(importer.isImporting)
        #expect(importer.lastImport == nil)
        await first.value
        #expect(!importer.isImporting)
        #expect(importer.lastImport != nil)
        #expect(store.saved.count == 5)
    }

    @Test func theOneTimePurgeRemovesGeneratedDuplicatesThroughTheAdapters() async {
        defer { usageHome.remove() }
        let old = Date(timeIntervalSinceReferenceDate: 700_000_000)
        for copy in 0..<12 {
            store.insertSaved(SampleRecord(
                dayKey: "2025-03-14", tool: "codex", requests: Int64(copy), updatedAt: old + Double(copy)))
        }
        for copy in 0..<3 {
            store.insertSaved(SampleRecord(dayKey: "2024-12-31", tool: "phone-claude", updatedAt: old + Double(copy)))
        }
        await importer.runImport()

        let slots = store.saved.map(\.slot)
        #expect(Set(slots).count == slots.count)
        #expect(slots.count == 5 + 1)
        #expect(settings.bool(forKey: "usageSamplePurge.v1"))
        #expect(importer.purgeProgress == nil)
        #expect(importer.lastError == nil)
    }

    @Test func aFailingStoreIsReportedWithItsDescription() async {
        defer { usageHome.remove() }
        struct Unreadable: LocalizedError {
            var errorDescription: String? { "base verrouillée" }
        }
        let folders = EngineFolders(home: usageHome.home, support: usageHome.support)
        let failing = UsageImporter(
            folders: folders, settings: settings, openStore: { throw Unreadable() },
            activity: AppActivityWatcher(folders: folders))
        await failing.runImport()
        #expect(failing.lastError == "Store illisible : base verrouillée")
        #expect(failing.detectedTools == ["claude-code", "codex", "cursor"])
        #expect(!settings.bool(forKey: "usageSamplePurge.v1"))
    }
}
