import Foundation

/// The settings kept in the user defaults (standard ones in the app).
public final class UserDefaultsSettings: SettingsStorage, @unchecked Sendable {
    // UserDefaults is documented as thread-safe; the class adds no state of its own.
    private let defaults: UserDefaults

    public init(_ defaults: UserDefaults = .standard) {
        self.defaults = defaults
    }

    public func bool(forKey key: String) -> Bool {
        defaults.object(forKey: key) as? Bool ?? false
    }

    public func set(_ value: Bool, forKey key: String) {
        defaults.set(value, forKey: key)
    }

    public func date(forKey key: String) -> Date? {
        defaults.object(forKey: key) as? Date
    }

    public func set(_ value: Date?, forKey key: String) {
        if let value {
            defaults.set(value, forKey: key)
        } else {
            defaults.removeObject(forKey: key)
        }
    }
}
