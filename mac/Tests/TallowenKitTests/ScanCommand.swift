import Foundation
import TallowenKit

/// `tallowen scan --json`, the terminal's reading of the same logs, built by
/// CMake (scripts/test.sh builds it first). TALLOWEN_EXE names another build.
enum ScanCommand {
    static var executable: URL {
        if let path = ProcessInfo.processInfo.environment["TALLOWEN_EXE"] { return URL(fileURLWithPath: path) }
        return RepositoryFolder.url.appendingPathComponent("build/release/tallowen")
    }

    static var isBuilt: Bool { FileManager.default.isExecutableFile(atPath: executable.path) }

    struct Output: Decodable {
        var detected: [String]
        var samples: [Sample]
    }

    /// A scanned sample has no identifier nor write date: those are the store's.
    struct Sample: Decodable {
        var dayKey, tool: String
        var sessions, requests, inputTokens, outputTokens, estimatedCostCents, estimatedWaterMilliliters: Int64
        var episodeHours: [Int64]
        var quotaPrimaryPercent, quotaSecondaryPercent: Double?
        var quotaPrimaryResetAt, quotaSecondaryResetAt: Date?
        var quotaPlan: String?

        func record(id: String, updatedAt: Date) -> SampleRecord {
            SampleRecord(
                id: id, dayKey: dayKey, tool: tool, sessions: sessions, requests: requests, inputTokens: inputTokens,
                outputTokens: outputTokens, episodeHours: episodeHours, estimatedCostCents: estimatedCostCents,
                estimatedWaterMilliliters: estimatedWaterMilliliters, quotaPrimaryPercent: quotaPrimaryPercent,
                quotaPrimaryResetAt: quotaPrimaryResetAt, quotaSecondaryPercent: quotaSecondaryPercent,
                quotaSecondaryResetAt: quotaSecondaryResetAt, quotaPlan: quotaPlan, updatedAt: updatedAt)
        }
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
        let decoder = JSONDecoder()
        decoder.dateDecodingStrategy = .iso8601
        return try decoder.decode(Output.self, from: output)
    }
}
