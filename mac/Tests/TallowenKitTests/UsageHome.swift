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
        try write(
            ".claude/projects/-home-dev-app/first.jsonl",
            #"{"type":"assistant","timestamp":"2025-03-14T09:00:00Z","message":{"model":"claude-sonnet-4-5","usage":{"input_tokens":1200,"cache_creation_input_tokens":300,"cache_read_input_tokens":9000,"output_tokens":800}}}"#,
            #"{"type":"assistant","timestamp":"2025-03-14T22:45:00.125Z","message":{"model":"claude-opus-4-1","usage":{"input_tokens":50,"output_tokens":2500}}}"#,
            #"{"type":"assistant","timestamp":"2025-03-15T07:10:00Z","message":{"usage":{"input_tokens":10}}}"#)
        try write(
            ".codex/sessions/2025/03/14/rollout-x.jsonl",
            #"{"timestamp":"2025-03-14T10:00:00Z","type":"event_msg","payload":{"type":"thread_settings_applied","thread_settings":{"model":"gpt-5"}}}"#,
            #"{"timestamp":"2025-03-14T10:05:00Z","type":"event_msg","payload":{"type":"token_count","info":{"last_token_usage":{"input_tokens":5000,"cached_input_tokens":3000,"output_tokens":700}},"rate_limits":{"primary":{"used_percent":12.5,"resets_at":1741960800},"plan_type":"pro"}}}"#)
        try write(
            ".codex/archived_sessions/rollout-y.jsonl",
            #"{"timestamp":"2025-03-15T11:00:00Z","type":"event_msg","payload":{"type":"token_count","info":{"last_token_usage":{"input_tokens":800,"output_tokens":200}}}}"#)
        let session = String(repeating: "d", count: 36)
        try writeCursorDatabase([
            ("composerData:\(session)", #"{"_v":3,"createdAt":1741950000000}"#),
            ("bubbleId:\(session):1", #"{"_v":2,"type":2,"tokenCount":{"inputTokens":3000,"outputTokens":400}}"#),
        ])
    }

    func remove() {
        try? FileManager.default.removeItem(at: root)
    }

    private func write(_ path: String, _ lines: String...) throws {
        let file = home.appendingPathComponent(path)
        try FileManager.default.createDirectory(at: file.deletingLastPathComponent(), withIntermediateDirectories: true)
        try (lines.joined(separator: "\n") + "\n").write(to: file, atomically: true, encoding: .utf8)
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
