/// The software updater (Sparkle in the Mac app).
public protocol SoftwareUpdating: AnyObject {
    func checkForUpdates()
}
