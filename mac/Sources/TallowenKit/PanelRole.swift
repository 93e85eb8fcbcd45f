/// A colour role of the panel; the shell maps each to its palette.
public enum PanelRole: String, Sendable, Decodable {
    case primary, secondary, accent, warning, dimmed, disabled
}
