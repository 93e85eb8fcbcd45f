import Foundation

/// The repository's top folder: the tests' data and the CMake build lie under it.
enum RepositoryFolder {
    static let url = URL(fileURLWithPath: #filePath).deletingLastPathComponent().deletingLastPathComponent()
        .deletingLastPathComponent().deletingLastPathComponent()
}
