import Foundation

/// The user-defaults keys: "lastImportDate", "usageSamplePurge.v1",
/// "firstLaunchNoticeShown", "loginItemRegistered", "cloudSync.lastSuccessAt".
/// A value of another type reads as absent (false for a boolean).
public protocol SettingsStorage: AnyObject, Sendable {
    func bool(forKey key: String) -> Bool
    func set(_ value: Bool, forKey key: String)
    func date(forKey key: String) -> Date?
    func set(_ value: Date?, forKey key: String)
}
