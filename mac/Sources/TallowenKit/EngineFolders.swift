import Foundation

/// The folders the engine reads and writes: the home folder where the tools'
/// logs are looked up, and the support folder ("TallowenMac" under
/// Application Support) holding "import-state.json" and "app-activations.json".
public struct EngineFolders: Sendable {
    public var home: URL
    public var support: URL

    public init(home: URL, support: URL) {
        self.home = home
        self.support = support
    }

    public static func standard() -> EngineFolders {
        let files = FileManager.default
        let applicationSupport = files.urls(for: .applicationSupportDirectory, in: .userDomainMask).first
            ?? files.homeDirectoryForCurrentUser.appendingPathComponent("Library/Application Support")
        return EngineFolders(
            home: files.homeDirectoryForCurrentUser,
            support: applicationSupport.appendingPathComponent("TallowenMac", isDirectory: true))
    }
}
