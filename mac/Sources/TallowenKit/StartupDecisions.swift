import Foundation
import TallowenEngine

/// The engine's start-up decisions.
public enum StartupDecisions {
    /// The notice on the first launch only; its flag is set before it is returned.
    public static func claimFirstLaunchNotice(settings: any SettingsStorage) -> FirstLaunchNotice? {
        let engineSettings = SettingsBridge.makeHandle(settings)
        defer { tw_settings_free(engineSettings) }
        guard let json = takeEngineText(tw_claim_first_launch_notice(engineSettings)) else { return nil }
        return try? JSONDecoder().decode(FirstLaunchNotice.self, from: Data(json.utf8))
    }

    /// Whether the store follows the private cloud database.
    public static func usesCloudDatabase(taskAvailable: Bool, hasCloudServicesEntitlement: Bool) -> Bool {
        tw_uses_cloud_database(taskAvailable, hasCloudServicesEntitlement)
    }
}
