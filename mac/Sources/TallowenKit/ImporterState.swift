import Foundation

/// The importer's published properties as the engine reports them.
struct ImporterState: Decodable, Equatable {
    var isImporting: Bool
    var lastImport: Date?
    var lastError: String?
    var detectedTools: [String]
    var todaySessions: Int64
    var todayTokens: Int64
    var todayCostCents: Int64
    var purgeProgress: Double?
}
