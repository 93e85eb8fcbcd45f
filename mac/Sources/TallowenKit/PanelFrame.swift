import Foundation

/// Everything the shell draws at one moment, as the engine's panel session
/// decides it. Property names are the JSON keys of the engine's frame; absent
/// sections are nil.
public struct PanelFrame: Decodable, Sendable {
    public struct RoledText: Decodable, Sendable {
        public var text: String
        public var role: PanelRole
    }

    public struct Cleaning: Decodable, Sendable {
        public var title: String
        public var progress: Double
        public var percentText: String
        public var barFraction: Double
        public var note: String
    }

    public struct Counter: Decodable, Sendable {
        public var text: String
        /// The text split for two sizes; the unit is drawn at 0.55x, nil for one size.
        public var number: String
        public var unit: String?
        public var animates: Bool
        public var transitionSeconds: Double
        public var tickSeconds: Double
    }

    public struct Today: Decodable, Sendable {
        public var title: String
        public var requestsText: String
        public var requestsLabel: String
        public var tokensLabel: String
        public var counter: Counter
        public var costText: String
        public var waterTitle: String
        public var waterText: String
        public var equivalentText: String
        public var comparisonLine: String
        /// BottleLevel raw value, 0 to 4.
        public var level: Int
        /// The level's 44 rows of 24 pixels ("0" empty, other digits filled).
        public var bottleRows: [String]
    }

    public struct ToolRow: Decodable, Sendable {
        public var tool: String
        public var label: String
        public var figuresText: String
    }

    public struct Week: Decodable, Sendable {
        public var title: String
        public var line: String
    }

    public struct QuotaBar: Decodable, Sendable {
        public var title: String
        public var fillFraction: Double
        public var percentText: String
        public var role: PanelRole
        public var resetText: String?
    }

    public struct QuotaBlock: Decodable, Sendable {
        public var tool: String
        public var label: String
        public var plan: String?
        public var bars: [QuotaBar]
    }

    public struct Quotas: Decodable, Sendable {
        public var title: String
        public var blocks: [QuotaBlock]
    }

    public struct DetectedTools: Decodable, Sendable {
        public var title: String
        public var text: String
        public var role: PanelRole
    }

    public struct CloudWarning: Decodable, Sendable {
        /// "syncing", "never" or "stale".
        public var kind: String
        public var text: String
        public var showsRelaunch: Bool
        public var relaunchLabel: String
        public var role: PanelRole
    }

    public struct LoginItem: Decodable, Sendable {
        public var label: String
        public var isOn: Bool
    }

    public struct UpdateButton: Decodable, Sendable {
        public var label: String
    }

    public struct Footer: Decodable, Sendable {
        public var importLabel: String
        public var importEnabled: Bool
        public var importRole: PanelRole
        public var syncLabel: String
        public var quitLabel: String
        public var lastImportText: String?
        public var syncStatusLine: String?
        public var developmentBadge: String?
        public var developmentBadgeHelp: String
    }

    /// When set, the shell shows only the title bar and this card.
    public var cleaning: Cleaning?
    public var title: RoledText
    public var showsImportIndicator: Bool
    public var today: Today
    /// Empty: the section is absent.
    public var toolRows: [ToolRow]
    public var week: Week
    public var quotas: Quotas?
    public var detectedTools: DetectedTools
    /// The last error as it stands, drawn in the warning role.
    public var errorLine: String?
    public var cloudWarning: CloudWarning?
    public var loginItem: LoginItem?
    public var updateButton: UpdateButton?
    public var footer: Footer
    /// Seconds until the frame next changes.
    public var nextFrameSeconds: Double
}
