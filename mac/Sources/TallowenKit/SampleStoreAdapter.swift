/// The store the engine writes and purges through. Every method may throw; the
/// error's localizedDescription becomes the engine's lastError text.
/// An adapter instance is used from one thread at a time; the importer opens one
/// adapter per context it needs through `SampleStoreOpening`. Changes stay
/// pending until `save()`; an adapter released unsaved drops them.
public protocol SampleStoreAdapter: AnyObject {
    func fetchAll() throws -> [SampleRecord]
    func fetch(dayKey: String) throws -> [SampleRecord]
    /// Returns the new record's id.
    func insert(_ sample: SampleRecord) throws -> String
    /// Rewrites every field of the record named by `sample.id`.
    func update(_ sample: SampleRecord) throws
    func delete(id: String) throws
    func save() throws
    func count() throws -> Int64
    func count(slot: SampleSlot) throws -> Int64
    /// The slot's record with the latest updatedAt (ties in the store's order), limit 1.
    func newest(in slot: SampleSlot) throws -> SampleRecord?
    /// Store-side bulk delete of the slot's records but the keeper; returns how many.
    func deleteAll(in slot: SampleSlot, except keeperID: String) throws -> Int64
    /// Slots of the records sorted by day key then tool (localized standard
    /// compare), `limit` from `offset`.
    func slots(offset: Int64, limit: Int64) throws -> [SampleSlot]
}

/// Opens a fresh adapter (a new context on the shared container) each time it is called.
public typealias SampleStoreOpening = @Sendable () throws -> any SampleStoreAdapter
