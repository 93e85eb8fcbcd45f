import Foundation
import TallowenKit

/// Copies between the stored model and the engine's value. Counts are 64-bit on
/// both sides (Int is 64-bit on every Mac this app runs on).
extension UsageSample {
    convenience init(record: SampleRecord) {
        self.init()
        apply(record)
    }

    func record(id: String) -> SampleRecord {
        SampleRecord(
            id: id,
            dayKey: dayKey,
            tool: tool,
            sessions: Int64(sessions),
            requests: Int64(requests),
            inputTokens: Int64(inputTokens),
            outputTokens: Int64(outputTokens),
            episodeHours: episodeHours.map { Int64($0) },
            estimatedCostCents: Int64(estimatedCostCents),
            estimatedWaterMilliliters: Int64(estimatedWaterMilliliters),
            quotaPrimaryPercent: quotaPrimaryPercent,
            quotaPrimaryResetAt: quotaPrimaryResetAt,
            quotaSecondaryPercent: quotaSecondaryPercent,
            quotaSecondaryResetAt: quotaSecondaryResetAt,
            quotaPlan: quotaPlan,
            updatedAt: updatedAt
        )
    }

    /// Writes every field the engine decided, `updatedAt` included: the engine
    /// compares before it writes, so an unchanged sample never reaches here.
    func apply(_ record: SampleRecord) {
        dayKey = record.dayKey
        tool = record.tool
        sessions = Int(record.sessions)
        requests = Int(record.requests)
        inputTokens = Int(record.inputTokens)
        outputTokens = Int(record.outputTokens)
        episodeHours = record.episodeHours.map { Int($0) }
        estimatedCostCents = Int(record.estimatedCostCents)
        estimatedWaterMilliliters = Int(record.estimatedWaterMilliliters)
        quotaPrimaryPercent = record.quotaPrimaryPercent
        quotaPrimaryResetAt = record.quotaPrimaryResetAt
        quotaSecondaryPercent = record.quotaSecondaryPercent
        quotaSecondaryResetAt = record.quotaSecondaryResetAt
        quotaPlan = record.quotaPlan
        updatedAt = record.updatedAt
    }
}
