/// The alert that tells a new user where the app went, shown once.
public struct FirstLaunchNotice: Sendable, Decodable {
    /// After start-up, so that the menu-bar item is there first.
    public var delay: Duration
    public var messageText: String
    public var informativeText: String
    public var buttonTitle: String

    private enum CodingKeys: String, CodingKey {
        case delaySeconds, messageText, informativeText, buttonTitle
    }

    public init(from decoder: any Decoder) throws {
        let values = try decoder.container(keyedBy: CodingKeys.self)
        delay = .milliseconds(Int64((try values.decode(Double.self, forKey: .delaySeconds) * 1000).rounded()))
        messageText = try values.decode(String.self, forKey: .messageText)
        informativeText = try values.decode(String.self, forKey: .informativeText)
        buttonTitle = try values.decode(String.self, forKey: .buttonTitle)
    }
}
