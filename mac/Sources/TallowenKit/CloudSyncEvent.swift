import Foundation

/// One cloud-mirroring event of the store, as a value: started while it has
/// no end date, finished once it has one.
public struct CloudSyncEvent: Sendable {
    public enum Kind: Sendable { case setup, importEvent, exportEvent, other }

    public var kind: Kind
    public var endDate: Date?
    public var succeeded: Bool
    public var errorDescription: String?

    public init(kind: Kind, endDate: Date? = nil, succeeded: Bool = false, errorDescription: String? = nil) {
        self.kind = kind
        self.endDate = endDate
        self.succeeded = succeeded
        self.errorDescription = errorDescription
    }
}
