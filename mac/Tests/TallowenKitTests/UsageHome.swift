import CSQLite
import Foundation

/// A temporary home folder with logs of Claude Code, Codex and Cursor over two
/// days of March 2025, and a support folder beside it.
struct UsageHome {
    let root: URL
    var home: URL { root.appendingPathComponent("home") }
    var support: URL { root.appendingPathComponent("support") }

    init() throws {
        root = FileManager.default.temporaryDirectory.appendingPathComponent("tallowen-\(UUID().uuidString)")
        try FileManager.default.createDirectory(at: root, withIntermediateDirectories: true)
        try FileManager.default.copyItem(at: Self.logs, to: home)
        let session = String(repeating: "d", count: 36)
        try writeCursorDatabase([
            ("composerData:\(session)", #"{"_v":3,"createdAt":1741950000000}"#),
            ("bubbleId:\(session):1", #"{"_v":2,"type":2,"tokenCount":{"inputTokens":3000,"outputTokens":400}}"#),
        ])
    }

    /// The JSONL logs the C++ tests' home folder holds too.
    static let logs = RepositoryFolder.url.appendingPathComponent("tests/data/usage-home")

    func remove() {
        try? FileManager.default.removeItem(at: root)
    }

    private func writeCursorDatabase(_ rows: [(String, String)]) throws {
        let file = home.appendingPathComponent("Library/Application Support/Cursor/User/globalStorage/state.vscdb")
        try FileManager.default.createDirectory(at: file.deletingLastPathComponent(), withIntermediateDirectories: true)
        var database: OpaquePointer?
        guard sqlite3_open(file.path, &database) == SQLITE_OK else { throw CocoaError(.fileWriteUnknown) }
        defer { sqlite3_close(database) }
        sqlite3_exec(database, "CREATE TABLE cursorDiskKV (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB)", nil, nil, nil)
        for (key, value) in rows {
            let sql = "INSERT INTO cursorDiskKV VALUES ('\(key)', '\(value)')"
            sqlite3_exec(database, sql, nil, nil, nil)
        }
    }
}
