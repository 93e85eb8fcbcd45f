import Foundation
import TallowenKit

/// Settings held in memory for one test.
final class MemorySettings: SettingsStorage, @unchecked Sendable {
    private let lock = NSLock()
    private var values: [String: Any] = [:]

    func bool(forKey key: String) -> Bool { lock.withLock { values[key] as? Bool ?? false } }
    func set(_ value: Bool, forKey key: String) { lock.withLock { values[key] = value } }
    func date(forKey key: String) -> Date? { lock.withLock { values[key] as? Date } }
    func set(_ value: Date?, forKey key: String) { lock.withLock { values[key] = value } }
}
