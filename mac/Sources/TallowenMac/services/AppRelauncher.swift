import AppKit

/// Starts a fresh instance of this app, then quits this one. CloudKit mirroring
/// only starts over in a new process, which is what "SYNCHRO" and "RELANCER" need.
enum AppRelauncher {
    @MainActor
    static func relaunch() {
        let configuration = NSWorkspace.OpenConfiguration()
        configuration.createsNewApplicationInstance = true
        NSWorkspace.shared.openApplication(at: Bundle.main.bundleURL, configuration: configuration) { _, _ in
            DispatchQueue.main.async {
                MainActor.assumeIsolated {
                    NSApplication.shared.terminate(nil)
                }
            }
        }
    }
}
