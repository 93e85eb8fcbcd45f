/// The platform login-item service's status for the main application.
public enum LoginItemStatus: Sendable {
    case notRegistered, enabled, requiresApproval, notFound
}
