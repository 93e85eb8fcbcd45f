import Foundation

/// Samples kept in memory, shared by the adapters opened on it the way a
/// container is shared by its contexts: each adapter keeps its changes
/// pending until it saves them. For tests and previews.
public final class InMemorySampleStore: @unchecked Sendable {
    // Adapters on other tasks save into the same records; the lock keeps each
    // save and each read whole.
    private let lock = NSLock()
    private var records: [SampleRecord] = []
    private var nextIdentifier = 1

    public init(_ records: [SampleRecord] = []) {
        for record in records { _ = insertSaved(record) }
    }

    /// The saved records, in insertion order.
    public var saved: [SampleRecord] { lock.withLock { records } }

    /// Opens a new adapter on the saved records.
    public var opening: SampleStoreOpening { { Adapter(store: self) } }

    @discardableResult
    public func insertSaved(_ record: SampleRecord) -> String {
        lock.withLock {
            var stored = record
            stored.id = "memory://sample/\(nextIdentifier)"
            nextIdentifier += 1
            records.append(stored)
            return stored.id
        }
    }

    fileprivate func snapshot() -> (records: [SampleRecord], nextIdentifier: Int) {
        lock.withLock { (records, nextIdentifier) }
    }

    fileprivate func commit(_ changed: [SampleRecord], nextIdentifier identifier: Int) {
        lock.withLock {
            records = changed
            nextIdentifier = max(nextIdentifier, identifier)
        }
    }

    private final class Adapter: SampleStoreAdapter {
        private let store: InMemorySampleStore
        private var records: [SampleRecord]
        private var nextIdentifier: Int

        init(store: InMemorySampleStore) {
            self.store = store
            (records, nextIdentifier) = store.snapshot()
        }

        func fetchAll() throws -> [SampleRecord] { records }
        func fetch(dayKey: String) throws -> [SampleRecord] { records.filter { $0.dayKey == dayKey } }

        func insert(_ sample: SampleRecord) throws -> String {
            var stored = sample
            stored.id = "memory://sample/\(nextIdentifier)"
            nextIdentifier += 1
            records.append(stored)
            return stored.id
        }

        func update(_ sample: SampleRecord) throws {
            guard let index = records.firstIndex(where: { $0.id == sample.id }) else { return }
            records[index] = sample
        }

        func delete(id: String) throws { records.removeAll { $0.id == id } }
        func save() throws { store.commit(records, nextIdentifier: nextIdentifier) }
        func count() throws -> Int64 { Int64(records.count) }
        func count(slot: SampleSlot) throws -> Int64 { Int64(records.filter { $0.slot == slot }.count) }

        func newest(in slot: SampleSlot) throws -> SampleRecord? {
            records.filter { $0.slot == slot }.max { $0.updatedAt < $1.updatedAt }
        }

        func deleteAll(in slot: SampleSlot, except keeperID: String) throws -> Int64 {
            let before = records.count
            records.removeAll { $0.slot == slot && $0.id != keeperID }
            return Int64(before - records.count)
        }

        func slots(offset: Int64, limit: Int64) throws -> [SampleSlot] {
            let sorted = records.map(\.slot).sorted {
                $0.dayKey != $1.dayKey ? $0.dayKey < $1.dayKey : $0.tool < $1.tool
            }
            return Array(sorted.dropFirst(Int(offset)).prefix(Int(limit)))
        }
    }
}
