import AppKit
import TallowenKit

/// Shows the one-time welcome alert the engine hands over, after the delay it
/// names, with the app brought in front of whatever the user was doing.
enum FirstLaunchNoticePresenter {
    @MainActor
    static func schedule(_ notice: FirstLaunchNotice) {
        let (seconds, attoseconds) = notice.delay.components
        let delaySeconds = Double(seconds) + Double(attoseconds) / 1e18
        DispatchQueue.main.asyncAfter(deadline: .now() + delaySeconds) {
            MainActor.assumeIsolated {
                present(notice)
            }
        }
    }

    @MainActor
    private static func present(_ notice: FirstLaunchNotice) {
        let alert = NSAlert()
        alert.messageText = LocalizedText.lookUp(notice.messageText)
        alert.informativeText = LocalizedText.lookUp(notice.informativeText)
        alert.addButton(withTitle: LocalizedText.lookUp(notice.buttonTitle))
        // A menu-bar app is never frontmost on its own; the cooperative
        // activate() of macOS 14 may decline, so the alert would open behind
        // the active window.
        NSApplication.shared.activate(ignoringOtherApps: true)
        alert.runModal()
    }
}
