import TallowenEngine

/// Launch at login through the platform's login-item service; the engine
/// decides what the checkbox reads and when the first launch registers.
@MainActor public final class LaunchAtLogin {
    private let service: any LoginItemService
    private let settings: any SettingsStorage

    public init(service: any LoginItemService, settings: any SettingsStorage) {
        self.service = service
        self.settings = settings
    }

    /// Read from the platform each time: only an enabled registration reads true.
    public var isEnabled: Bool {
        let status: tw_login_item_status
        switch service.status {
        case .notRegistered: status = TW_LOGIN_ITEM_NOT_REGISTERED
        case .enabled: status = TW_LOGIN_ITEM_ENABLED
        case .requiresApproval: status = TW_LOGIN_ITEM_REQUIRES_APPROVAL
        case .notFound: status = TW_LOGIN_ITEM_NOT_FOUND
        }
        return tw_login_item_enabled(status)
    }

    /// Registers or unregisters; a refusal is dropped, and the next read shows the real state.
    public func setEnabled(_ enabled: Bool) {
        if enabled {
            try? service.register()
        } else {
            try? service.unregister()
        }
    }

    /// Once per installation: the flag is set first, so a failure is not retried.
    public func registerOnFirstLaunch() {
        let engineSettings = SettingsBridge.makeHandle(settings)
        defer { tw_settings_free(engineSettings) }
        if tw_claim_login_item_registration(engineSettings) { try? service.register() }
    }
}
