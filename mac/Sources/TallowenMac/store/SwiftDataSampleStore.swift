import Foundation
import SwiftData
import TallowenKit

/// The engine's sample store on SwiftData: one `ModelContext` of its own on the
/// shared container, never the interface's context, used from one thread at a
/// time as the engine's writer and purge require.
///
/// Records are named by `PersistentIdentifierText`. The adapter keeps every
/// record it fetched or inserted under that text, so the engine's later update,
/// delete and keeper all reach the very object of this context.
final class SwiftDataSampleStore: SampleStoreAdapter {
    private let context: ModelContext
    private let identifierText = PersistentIdentifierText()
    private var samplesByID: [String: UsageSample] = [:]

    init(container: ModelContainer) {
        context = ModelContext(container)
        // The engine saves once, when its pass is done; nothing may reach the
        // store (and the cloud) half-written before that.
        context.autosaveEnabled = false
    }

    func fetchAll() throws -> [SampleRecord] {
        try records(matching: FetchDescriptor<UsageSample>())
    }

    func fetch(dayKey: String) throws -> [SampleRecord] {
        try records(matching: FetchDescriptor<UsageSample>(
            predicate: #Predicate<UsageSample> { sample in sample.dayKey == dayKey }
        ))
    }

    func insert(_ sample: SampleRecord) throws -> String {
        let model = UsageSample(record: sample)
        context.insert(model)
        return try remember(model)
    }

    func update(_ sample: SampleRecord) throws {
        try model(withID: sample.id).apply(sample)
    }

    func delete(id: String) throws {
        context.delete(try model(withID: id))
        samplesByID[id] = nil
    }

    func save() throws {
        try context.save()
    }

    func count() throws -> Int64 {
        Int64(try context.fetchCount(FetchDescriptor<UsageSample>()))
    }

    func count(slot: SampleSlot) throws -> Int64 {
        Int64(try context.fetchCount(FetchDescriptor<UsageSample>(predicate: Self.predicate(for: slot))))
    }

    func newest(in slot: SampleSlot) throws -> SampleRecord? {
        var descriptor = FetchDescriptor<UsageSample>(
            predicate: Self.predicate(for: slot),
            sortBy: [SortDescriptor(\UsageSample.updatedAt, order: .reverse)]
        )
        descriptor.fetchLimit = 1
        return try records(matching: descriptor).first
    }

    /// One store-side delete of every sample of the slot but the keeper. The
    /// losers are counted first with the same predicate, since the delete itself
    /// reports nothing and takes effect at the next save.
    func deleteAll(in slot: SampleSlot, except keeperID: String) throws -> Int64 {
        let keeper = try model(withID: keeperID).persistentModelID
        let dayKey = slot.dayKey
        let tool = slot.tool
        let losers = #Predicate<UsageSample> { sample in
            sample.dayKey == dayKey && sample.tool == tool && sample.persistentModelID != keeper
        }
        let loserCount = try context.fetchCount(FetchDescriptor<UsageSample>(predicate: losers))
        if loserCount > 0 {
            try context.delete(model: UsageSample.self, where: losers, includeSubclasses: false)
        }
        return Int64(loserCount)
    }

    /// A page of (day key, tool) pairs for the purge's full scan: only the two
    /// properties are fetched, sorted with the localized standard comparison.
    func slots(offset: Int64, limit: Int64) throws -> [SampleSlot] {
        var descriptor = FetchDescriptor<UsageSample>(sortBy: [
            SortDescriptor(\UsageSample.dayKey, comparator: .localizedStandard, order: .forward),
            SortDescriptor(\UsageSample.tool, comparator: .localizedStandard, order: .forward),
        ])
        descriptor.fetchOffset = Int(offset)
        descriptor.fetchLimit = Int(limit)
        descriptor.propertiesToFetch = [\UsageSample.dayKey, \UsageSample.tool]
        return try context.fetch(descriptor).map { SampleSlot(dayKey: $0.dayKey, tool: $0.tool) }
    }

    private static func predicate(for slot: SampleSlot) -> Predicate<UsageSample> {
        let dayKey = slot.dayKey
        let tool = slot.tool
        return #Predicate<UsageSample> { sample in sample.dayKey == dayKey && sample.tool == tool }
    }

    private func records(matching descriptor: FetchDescriptor<UsageSample>) throws -> [SampleRecord] {
        try context.fetch(descriptor).map { model in model.record(id: try remember(model)) }
    }

    private func remember(_ model: UsageSample) throws -> String {
        let id = try identifierText.text(of: model.persistentModelID)
        samplesByID[id] = model
        return id
    }

    private func model(withID id: String) throws -> UsageSample {
        guard let model = samplesByID[id] else { throw SampleStoreFailure.unknownRecord(id: id) }
        return model
    }
}
