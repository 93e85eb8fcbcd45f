import Foundation
import Security

/// What the running process was signed with, read once at start-up: whether it
/// may use iCloud services, and which CloudKit environment it was given.
struct EntitlementProbe {
    /// False when the platform would not describe the running task at all.
    let taskAvailable: Bool
    /// Any value of "com.apple.developer.icloud-services" counts.
    let hasCloudServices: Bool
    /// The text of "com.apple.developer.icloud-container-environment", if any.
    let cloudEnvironment: String?

    static func runningTask() -> EntitlementProbe {
        guard let task = SecTaskCreateFromSelf(nil) else {
            return EntitlementProbe(taskAvailable: false, hasCloudServices: false, cloudEnvironment: nil)
        }
        let services = SecTaskCopyValueForEntitlement(
            task, "com.apple.developer.icloud-services" as CFString, nil
        )
        let environment = SecTaskCopyValueForEntitlement(
            task, "com.apple.developer.icloud-container-environment" as CFString, nil
        )
        return EntitlementProbe(
            taskAvailable: true,
            hasCloudServices: services != nil,
            cloudEnvironment: environment as? String
        )
    }
}
