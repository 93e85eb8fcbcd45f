import Foundation

/// The unit of a relative time; the engine chooses it and the count.
public enum RelativeTimeUnit: Int, Sendable, CaseIterable {
    case second, minute, hour, day, week, month, year
}

/// The pieces of text the engine asks the platform for: numbers, money,
/// relative times, times of day and upper case, written the user's way. Every
/// number, unit and rounding is decided by the engine beforehand.
public protocol LocaleFormatting: AnyObject {
    /// "," in French, "." in English.
    var decimalSeparator: String { get }
    /// Exactly `fractionDigits` fraction digits, with the locale's grouping.
    func decimal(_ value: Double, fractionDigits: Int) -> String
    /// With the locale's digit grouping.
    func groupedInteger(_ value: Int64) -> String
    /// An amount in US dollars with exactly `fractionDigits` fraction digits.
    func usDollars(_ dollars: Double, fractionDigits: Int) -> String
    /// `count` units ago, in full words, with the named form where the
    /// language has one ("hier", "yesterday").
    func timeAgo(count: Int64, unit: RelativeTimeUnit) -> String
    /// The time of day in the locale's short style.
    func shortTime(_ date: Date) -> String
    /// Upper case by the language-neutral rules.
    func upperCased(_ text: String) -> String
}
