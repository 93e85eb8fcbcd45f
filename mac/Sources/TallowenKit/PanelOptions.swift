/// What the shell offers beside the panel's figures.
public struct PanelOptions: Sendable {
    /// The cloud warning and the footer's sync line (the Mac app).
    public var showsCloudLines: Bool
    /// The update button shows only when an updater exists.
    public var hasUpdater: Bool
    /// The launch-at-login checkbox.
    public var showsLoginItem: Bool

    public init(showsCloudLines: Bool = false, hasUpdater: Bool = false, showsLoginItem: Bool = false) {
        self.showsCloudLines = showsCloudLines
        self.hasUpdater = hasUpdater
        self.showsLoginItem = showsLoginItem
    }
}
