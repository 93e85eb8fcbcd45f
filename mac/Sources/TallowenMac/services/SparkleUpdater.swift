import Foundation
import Sparkle
import TallowenKit

/// Sparkle's standard updater behind the engine's update seam. Feed, public key
/// and check schedule come from the bundle's Info.plist, never from code.
@MainActor
final class SparkleUpdater: SoftwareUpdating {
    private let controller: SPUStandardUpdaterController

    init() {
        controller = SPUStandardUpdaterController(
            startingUpdater: true,
            updaterDelegate: nil,
            userDriverDelegate: nil
        )
    }

    nonisolated func checkForUpdates() {
        MainActor.assumeIsolated {
            controller.checkForUpdates(nil)
        }
    }

    /// A bundle built without a feed address has nothing to check against, and
    /// Sparkle would greet every launch with a start-up error; such a build runs
    /// without an updater.
    static func isConfigured(in bundle: Bundle) -> Bool {
        guard let feed = bundle.object(forInfoDictionaryKey: "SUFeedURL") as? String else { return false }
        return !feed.isEmpty
    }
}
