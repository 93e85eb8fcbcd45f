import Foundation

/// One stored `UsageSample` as a value, field for field as the engine and the
/// synchronised store know it. Crosses the engine's C interface as JSON with
/// these keys; dates are seconds since 2001, Foundation's own encoding.
public struct SampleRecord: Sendable, Equatable, Codable {
    /// The persistent identifier printed as text ("" before insertion).
    public var id: String
    public var dayKey: String
    public var tool: String
    public var sessions: Int64
    public var requests: Int64
    public var inputTokens: Int64
    public var outputTokens: Int64
    public var episodeHours: [Int64]
    public var estimatedCostCents: Int64
    public var estimatedWaterMilliliters: Int64
    public var quotaPrimaryPercent: Double?
    public var quotaPrimaryResetAt: Date?
    public var quotaSecondaryPercent: Double?
    public var quotaSecondaryResetAt: Date?
    public var quotaPlan: String?
    public var updatedAt: Date

    public init(
        id: String = "", dayKey: String, tool: String, sessions: Int64 = 0, requests: Int64 = 0,
        inputTokens: Int64 = 0, outputTokens: Int64 = 0, episodeHours: [Int64] = [],
        estimatedCostCents: Int64 = 0, estimatedWaterMilliliters: Int64 = 0,
        quotaPrimaryPercent: Double? = nil, quotaPrimaryResetAt: Date? = nil,
        quotaSecondaryPercent: Double? = nil, quotaSecondaryResetAt: Date? = nil,
        quotaPlan: String? = nil, updatedAt: Date
    ) {
        self.id = id
        self.dayKey = dayKey
        self.tool = tool
        self.sessions = sessions
        self.requests = requests
        self.inputTokens = inputTokens
        self.outputTokens = outputTokens
        self.episodeHours = episodeHours
        self.estimatedCostCents = estimatedCostCents
        self.estimatedWaterMilliliters = estimatedWaterMilliliters
        self.quotaPrimaryPercent = quotaPrimaryPercent
        self.quotaPrimaryResetAt = quotaPrimaryResetAt
        self.quotaSecondaryPercent = quotaSecondaryPercent
        self.quotaSecondaryResetAt = quotaSecondaryResetAt
        self.quotaPlan = quotaPlan
        self.updatedAt = updatedAt
    }

    /// The (day key, tool) slot that at most one sample may hold.
    public var slot: SampleSlot { SampleSlot(dayKey: dayKey, tool: tool) }
}
