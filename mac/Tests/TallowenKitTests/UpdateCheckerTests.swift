import Testing
import TallowenKit

@MainActor struct UpdateCheckerTests {
    final class Updater: SoftwareUpdating {
        var checks = 0
        func checkForUpdates() { checks += 1 }
    }

    @Test func checksOnlyThroughAnUpdaterWhenThereIsOne() {
        let checker = UpdateChecker()
        #expect(!checker.canCheckForUpdates)
        checker.checkForUpdates()
        let updater = Updater()
        checker.updater = updater
        #expect(checker.canCheckForUpdates)
        checker.checkForUpdates()
        #expect(updater.checks == 1)
    }
}
