/// The platform's login-item service for the main application
/// (ServiceManagement in the Mac app).
public protocol LoginItemService: AnyObject {
    var status: LoginItemStatus { get }
    func register() throws
    func unregister() throws
}
