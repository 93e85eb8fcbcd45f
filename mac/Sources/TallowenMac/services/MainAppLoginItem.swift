import ServiceManagement
import TallowenKit

/// The app itself as a login item, through ServiceManagement. The engine turns
/// the status into the checkbox and decides when to register.
final class MainAppLoginItem: LoginItemService, Sendable {
    var status: LoginItemStatus {
        switch SMAppService.mainApp.status {
        case .notRegistered:
            return .notRegistered
        case .enabled:
            return .enabled
        case .requiresApproval:
            return .requiresApproval
        case .notFound:
            return .notFound
        @unknown default:
            return .notFound
        }
    }

    func register() throws {
        try SMAppService.mainApp.register()
    }

    func unregister() throws {
        try SMAppService.mainApp.unregister()
    }
}
