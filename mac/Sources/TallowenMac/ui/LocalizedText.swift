import Foundation

/// The platform's localisation look-up, keyed by the French text itself; without
/// a translation table the text comes back as written.
enum LocalizedText {
    static func lookUp(_ text: String) -> String {
        Bundle.main.localizedString(forKey: text, value: text, table: nil)
    }
}
