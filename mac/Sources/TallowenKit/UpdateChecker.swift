/// Checks for a new version through the updater the Mac shell sets; without
/// one the menu shows no update button and a check does nothing.
@MainActor public final class UpdateChecker {
    public static let shared = UpdateChecker()

    public var updater: (any SoftwareUpdating)?

    public init() {}

    public var canCheckForUpdates: Bool { updater != nil }

    public func checkForUpdates() {
        updater?.checkForUpdates()
    }
}
