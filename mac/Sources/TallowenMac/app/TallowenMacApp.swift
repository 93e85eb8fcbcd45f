import SwiftData
import SwiftUI
import TallowenKit

/// The menu-bar app. Constructing it is the start-up sequence, in this order:
/// fonts, the cloud decision, the store, the importer, the three long-lived
/// services, the login item once and the welcome notice once. It owns the store
/// container and the importer for the life of the process.
@main
struct TallowenMacApp: App {
    @State private var importer: UsageImporter
    private let container: ModelContainer
    private let session: PanelSession
    private let launchAtLogin: LaunchAtLogin
    private let cloudEnvironment: String?

    init() {
        let bundle = Bundle.main
        let settings = UserDefaultsSettings()

        BundledFonts.register(named: ["Doto", "Silkscreen-Regular"], in: bundle)

        let entitlements = EntitlementProbe.runningTask()
        let usesCloud = StartupDecisions.usesCloudDatabase(
            taskAvailable: entitlements.taskAvailable,
            hasCloudServicesEntitlement: entitlements.hasCloudServices
        )
        cloudEnvironment = entitlements.cloudEnvironment

        let container = StoreContainerFactory.openStore(usingCloud: usesCloud, bundle: bundle)
        self.container = container

        let importer = UsageImporter(
            folders: EngineFolders.standard(),
            settings: settings,
            openStore: { SwiftDataSampleStore(container: container) },
            activity: AppActivityWatcher.shared
        )
        _importer = State(initialValue: importer)

        let updaterConfigured = SparkleUpdater.isConfigured(in: bundle)
        session = PanelSession(
            formatter: FoundationLocaleFormatter(),
            options: PanelOptions(showsCloudLines: true, hasUpdater: updaterConfigured, showsLoginItem: true)
        )

        Self.startServices(importer: importer, updaterConfigured: updaterConfigured)

        launchAtLogin = LaunchAtLogin(service: MainAppLoginItem(), settings: settings)
        launchAtLogin.registerOnFirstLaunch()

        if let notice = StartupDecisions.claimFirstLaunchNotice(settings: settings) {
            FirstLaunchNoticePresenter.schedule(notice)
        }
    }

    var body: some Scene {
        MenuBarExtra("Tallowen", systemImage: "square.grid.3x3.middle.filled") {
            MacMenuView(
                importer: importer,
                session: session,
                syncStatus: CloudSyncStatus.shared,
                launchAtLogin: launchAtLogin,
                cloudEnvironment: cloudEnvironment
            )
            .modelContainer(container)
        }
        .menuBarExtraStyle(.window)
    }

    /// Three fire-and-forget main-actor tasks, each run once construction has
    /// returned: the import scheduler (which starts the activity watcher, fed
    /// here by the workspace's activations), the cloud sync status with its
    /// CloudKit events, and the updater.
    private static func startServices(importer: UsageImporter, updaterConfigured: Bool) {
        Task { @MainActor in
            ImportScheduler.shared.start(importer: importer)
            WorkspaceActivationObserver.shared.start()
        }
        Task { @MainActor in
            CloudEventObserver.shared.start(feeding: CloudSyncStatus.shared)
        }
        Task { @MainActor in
            if updaterConfigured {
                UpdateChecker.shared.updater = SparkleUpdater()
            }
        }
    }
}
