import Testing
import TallowenKit

@MainActor struct StartupTests {
    final class LoginItem: LoginItemService {
        struct Refused: Error {}
        var status = LoginItemStatus.notRegistered
        var registrations = 0
        var refuses = false
        func register() throws {
            registrations += 1
            if refuses { throw Refused() }
            status = .requiresApproval
        }
        func unregister() throws { status = .notRegistered }
    }

    @Test func theLoginItemIsRegisteredOnceAndReadsOnOnlyWhenEnabled() {
        let settings = MemorySettings()
        let service = LoginItem()
        service.refuses = true
        let launchAtLogin = LaunchAtLogin(service: service, settings: settings)
        launchAtLogin.registerOnFirstLaunch()
        launchAtLogin.registerOnFirstLaunch()
        #expect(service.registrations == 1)
        #expect(settings.bool(forKey: "loginItemRegistered"))

        service.refuses = false
        launchAtLogin.setEnabled(true)
        #expect(!launchAtLogin.isEnabled)  // awaiting the user's approval
        service.status = .enabled
        #expect(launchAtLogin.isEnabled)
        launchAtLogin.setEnabled(false)
        #expect(!launchAtLogin.isEnabled)
    }

    @Test func theFirstLaunchNoticeComesOnceAndTheCloudFollowsTheEntitlement() {
        let settings = MemorySettings()
        let notice = StartupDecisions.claimFirstLaunchNotice(settings: settings)
        #expect(notice?.delay == .milliseconds(600))
        #expect(notice?.messageText == "Le compagnon est installé.")
        #expect(notice?.buttonTitle == "Compris")
        #expect(StartupDecisions.claimFirstLaunchNotice(settings: settings) == nil)
        #expect(StartupDecisions.usesCloudDatabase(taskAvailable: true, hasCloudServicesEntitlement: true))
        #expect(!StartupDecisions.usesCloudDatabase(taskAvailable: true, hasCloudServicesEntitlement: false))
    }
}
