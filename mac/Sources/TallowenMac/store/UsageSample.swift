import Foundation
import SwiftData

/// One tool on one day, as the phone app and this Mac share it through CloudKit.
/// The class name, the property names, their order and their defaults are the
/// CloudKit schema: CloudKit accepts only optional or defaulted properties and
/// no unique constraint, which is why duplicates can exist and are purged.
@Model
final class UsageSample {
    var dayKey: String = ""
    var tool: String = ""
    var sessions: Int = 0
    var requests: Int = 0
    var inputTokens: Int = 0
    var outputTokens: Int = 0
    var episodeHours: [Int] = []
    var estimatedCostCents: Int = 0
    var estimatedWaterMilliliters: Int = 0
    var quotaPrimaryPercent: Double? = nil
    var quotaPrimaryResetAt: Date? = nil
    var quotaSecondaryPercent: Double? = nil
    var quotaSecondaryResetAt: Date? = nil
    var quotaPlan: String? = nil
    var updatedAt: Date = Date.now

    init(
        dayKey: String = "",
        tool: String = "",
        sessions: Int = 0,
        requests: Int = 0,
        inputTokens: Int = 0,
        outputTokens: Int = 0,
        episodeHours: [Int] = [],
        estimatedCostCents: Int = 0,
        estimatedWaterMilliliters: Int = 0,
        quotaPrimaryPercent: Double? = nil,
        quotaPrimaryResetAt: Date? = nil,
        quotaSecondaryPercent: Double? = nil,
        quotaSecondaryResetAt: Date? = nil,
        quotaPlan: String? = nil,
        updatedAt: Date = Date.now
    ) {
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
}
