/// The (day key, tool) slot of a sample.
public struct SampleSlot: Sendable, Hashable, Codable {
    public var dayKey: String
    public var tool: String

    public init(dayKey: String, tool: String) {
        self.dayKey = dayKey
        self.tool = tool
    }
}
