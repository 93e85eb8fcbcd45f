import Foundation

/// The Mac app's formatter: Foundation's number, currency, relative-date and
/// time formatting, so the panel follows the user's own regional settings.
/// Used from one thread at a time (the main thread in the app).
public final class FoundationLocaleFormatter: LocaleFormatting {
    private let locale: Locale
    private let timeZone: TimeZone

    public init(locale: Locale = .autoupdatingCurrent, timeZone: TimeZone = .autoupdatingCurrent) {
        self.locale = locale
        self.timeZone = timeZone
    }

    public var decimalSeparator: String { locale.decimalSeparator ?? "." }

    private func numberFormatter(_ style: NumberFormatter.Style, fractionDigits: Int) -> NumberFormatter {
        let formatter = NumberFormatter()
        formatter.locale = locale
        formatter.numberStyle = style
        formatter.usesGroupingSeparator = true
        formatter.minimumFractionDigits = fractionDigits
        formatter.maximumFractionDigits = fractionDigits
        // Halves to even, as the terminal's formatter rounds.
        formatter.roundingMode = .halfEven
        return formatter
    }

    public func decimal(_ value: Double, fractionDigits: Int) -> String {
        let digits = min(max(fractionDigits, 0), 15)
        return numberFormatter(.decimal, fractionDigits: digits).string(from: NSNumber(value: value))
            ?? String(format: "%.*f", digits, value)
    }

    public func groupedInteger(_ value: Int64) -> String {
        numberFormatter(.decimal, fractionDigits: 0).string(from: NSNumber(value: value)) ?? String(value)
    }

    public func usDollars(_ dollars: Double, fractionDigits: Int) -> String {
        let digits = min(max(fractionDigits, 0), 15)
        let formatter = numberFormatter(.currency, fractionDigits: digits)
        formatter.currencyCode = "USD"
        return formatter.string(from: NSNumber(value: dollars)) ?? String(format: "$%.*f", digits, dollars)
    }

    public func timeAgo(count: Int64, unit: RelativeTimeUnit) -> String {
        let component: Calendar.Component
        switch unit {
        case .second: component = .second
        case .minute: component = .minute
        case .hour: component = .hour
        case .day: component = .day
        case .week: component = .weekOfYear
        case .month: component = .month
        case .year: component = .year
        }
        var calendar = Calendar(identifier: .gregorian)
        calendar.timeZone = timeZone
        // The style measures from its own "now", a moment after this one, so
        // the interval is the engine's count of units and a few microseconds.
        guard let then = calendar.date(byAdding: component, value: -Int(clamping: count), to: Date()) else {
            return "\(count)"
        }
        let style = Date.RelativeFormatStyle(
            presentation: .named, unitsStyle: .wide, locale: locale, calendar: calendar)
        return style.format(then)
    }

    public func shortTime(_ date: Date) -> String {
        let formatter = DateFormatter()
        formatter.locale = locale
        formatter.timeZone = timeZone
        formatter.dateStyle = .none
        formatter.timeStyle = .short
        return formatter.string(from: date)
    }

    public func upperCased(_ text: String) -> String {
        text.uppercased()
    }
}
