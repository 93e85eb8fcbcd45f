import Foundation

/// `tallowen scan --json`, the terminal's reading of the same logs, built by
/// CMake (scripts/test.sh builds it first). TALLOWEN_EXE names another build.
enum ScanCommand {
    static var executable: URL {
        if let path = ProcessInfo.processInfo.environment["TALLOWEN_EXE"] { return URL(fileURLWithPath: path) }
        return URL(fileURLWithPath: #filePath).deletingLastPathComponent().deletingLastPathComponent()
            .deletingLastPathComponent().deletingLastPathComponent().appendingPathComponent("build/release/tallowen")
    }

    static var isBuilt: Bool { FileManager.default.isExecutableFile(atPath: executable.path) }

    struct Output: Decodable {
        var detected: [String]
        var samples: [Sample]
    }

    struct Sample: Decodable {
        var dayKey: String
        var tool: String
        var sessions: Int64
        var requests: Int64
        var inputTokens: Int64
        var outputTokens: Int64
        var episodeHours: [Int64]
        var estimatedCostCents: Int64
        var estimatedWaterMilliliters: Int64
        var quotaPrimaryPercent: Double?
        var quotaPrimaryResetAt: String?
        var quotaSecondaryPercent: Double?
        var quotaSecondaryResetAt: String?
        var quotaPlan: String?
    }

    /// Runs the scan with its own data folder, so that it reads every log afresh.
    static func run(home: URL, data: URL) throws -> Output {
        let process = Process()
        process.executableURL = executable
        process.arguments = ["scan", "--json", "--home", home.path, "--data", data.path]
        let pipe = Pipe()
        process.standardOutput = pipe
        try process.run()
        let output = pipe.fileHandleForReading.readDataToEndOfFile()
        process.waitUntilExit()
        return try JSONDecoder().decode(Output.self, from: output)
    }
}
