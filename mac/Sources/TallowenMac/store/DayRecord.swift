import Foundation
import SwiftData

/// The phone app's notes about a day. This app never creates or reads one; it
/// declares the model only so that the shared CloudKit store keeps these
/// records intact. Names, order and defaults are the shared schema.
@Model
final class DayRecord {
    var dayKey: String = ""
    var count: Int64 = 0
    var updatedAt: Date = Date.now
    var note: String? = nil
    var validatedAt: Date? = nil
    var dayType: String = "normal"
    var extraPersonal: Int64 = 0

    init(
        dayKey: String = "",
        count: Int64 = 0,
        updatedAt: Date = Date.now,
        note: String? = nil,
        validatedAt: Date? = nil,
        dayType: String = "normal",
        extraPersonal: Int64 = 0
    ) {
        self.dayKey = dayKey
        self.count = count
        self.updatedAt = updatedAt
        self.note = note
        self.validatedAt = validatedAt
        self.dayType = dayType
        self.extraPersonal = extraPersonal
    }
}
