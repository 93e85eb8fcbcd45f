import Foundation
import SwiftData

/// Opens the one store of the app, shared by the engine's writer and purge and
/// by the menu's query: the platform's default location, `DayRecord` and
/// `UsageSample`, mirrored to the private CloudKit database when the process is
/// entitled to it and local only otherwise.
enum StoreContainerFactory {
    /// The Info.plist key holding the CloudKit container identifier, which the
    /// build writes from the same value as the entitlements; the phone app uses
    /// the same container.
    static let cloudKitContainerKey = "TallowenCloudKitContainer"

    /// There is no fallback store: opening a different one would show the user
    /// numbers the phone does not see, so a store that will not open stops the
    /// app at launch with the reason.
    static func openStore(usingCloud usesCloud: Bool, bundle: Bundle) -> ModelContainer {
        let configuration = ModelConfiguration(
            nil,
            schema: nil,
            isStoredInMemoryOnly: false,
            allowsSave: true,
            groupContainer: .automatic,
            cloudKitDatabase: usesCloud ? cloudDatabase(in: bundle) : .none
        )
        do {
            return try ModelContainer(
                for: DayRecord.self, UsageSample.self,
                migrationPlan: nil,
                configurations: configuration
            )
        } catch {
            fatalError("TallowenCompanion: the store cannot be opened: \(error)")
        }
    }

    /// The private database of the build's container; a build that set no
    /// identifier lets SwiftData take the first container of the entitlements.
    private static func cloudDatabase(in bundle: Bundle) -> ModelConfiguration.CloudKitDatabase {
        guard
            let identifier = bundle.object(forInfoDictionaryKey: cloudKitContainerKey) as? String,
            !identifier.isEmpty
        else { return .automatic }
        return .private(identifier)
    }
}
