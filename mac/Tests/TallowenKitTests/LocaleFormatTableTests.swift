import Foundation
import Testing
@testable import TallowenKit

/// Foundation's texts against the terminal's ICU texts, row by row, from the
/// table the ICU formatter is tested against (tests/data/locale-formats.json).
/// A row whose Foundation text differs on purpose says so in "foundation",
/// with the reason in "why".
struct LocaleFormatTableTests {
    struct Row: Decodable {
        var call: String
        var locale: String
        var icu: String
        var foundation: String?
        var why: String?
        var value: Double?
        var digits: Int?
        var count: Int64?
        var unit: String?
        var date: Double?
        var text: String?
    }

    static let rows: [Row] = {
        let table = RepositoryFolder.url.appendingPathComponent("tests/data/locale-formats.json")
        guard let data = try? Data(contentsOf: table) else { return [] }
        return (try? JSONDecoder().decode([Row].self, from: data)) ?? []
    }()

    static func text(of row: Row) -> String {
        let formatter = FoundationLocaleFormatter(
            locale: Locale(identifier: row.locale), timeZone: TimeZone(identifier: "UTC")!)
        switch row.call {
        case "decimalSeparator": return formatter.decimalSeparator
        case "decimal": return formatter.decimal(row.value ?? 0, fractionDigits: row.digits ?? 0)
        case "groupedInteger": return formatter.groupedInteger(Int64(row.value ?? 0))
        case "usDollars": return formatter.usDollars(row.value ?? 0, fractionDigits: row.digits ?? 0)
        case "timeAgo":
            let units: [String: RelativeTimeUnit] = [
                "second": .second, "minute": .minute, "hour": .hour, "day": .day, "week": .week, "month": .month,
                "year": .year,
            ]
            return formatter.timeAgo(count: row.count ?? 0, unit: units[row.unit ?? ""] ?? .second)
        case "shortTime": return formatter.shortTime(Date(timeIntervalSinceReferenceDate: row.date ?? 0))
        case "upperCased": return formatter.upperCased(row.text ?? "")
        default: return "unknown call \(row.call)"
        }
    }

    @Test func theTableIsThere() {
        #expect(Self.rows.count > 40)
    }

    @Test(arguments: rows.indices)
    func foundationWritesTheTerminalsTextOrTheNamedDifference(index: Int) {
        let row = Self.rows[index]
        let written = Self.text(of: row)
        #expect(written == (row.foundation ?? row.icu), "\(row.locale) \(row.call): \(written.unicodeScalars.map { String($0.value, radix: 16) })")
        if row.foundation != nil { #expect(row.why?.isEmpty == false) }
    }

    @Test func theEngineWritesItsMenuTextsThroughTheFoundationFormatter() {
        let french = FormatterBridge(FoundationLocaleFormatter(locale: Locale(identifier: "fr_FR")))
        #expect(french.menuTexts(tokens: 2_500_000, costCents: 350, waterMilliliters: 400)
            == ["tokens": "2,5 M", "cost": "3,50\u{a0}$US", "water": "0,4 L"])
        let english = FormatterBridge(FoundationLocaleFormatter(locale: Locale(identifier: "en_US")))
        #expect(english.menuTexts(tokens: 12_345, costCents: 123_456, waterMilliliters: 2_600)
            == ["tokens": "12 k", "cost": "$1,235", "water": "3 L"])
    }
}
