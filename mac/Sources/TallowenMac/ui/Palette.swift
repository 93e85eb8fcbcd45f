import SwiftUI
import TallowenKit

/// Every colour of the panel. The engine names a colour role for each text it
/// hands over; this is the one place that turns a role into a colour.
///
/// The panel is a dark gradient: a deep olive charcoal with tallow-cream text,
/// an amber accent and a coral warning that stays readable on it.
enum Palette {
    static let gradientTop = Color(red: 36 / 255, green: 41 / 255, blue: 31 / 255)
    static let gradientBottom = Color(red: 17 / 255, green: 19 / 255, blue: 15 / 255)
    static let primary = Color(red: 237 / 255, green: 230 / 255, blue: 211 / 255)
    static let secondary = Color(red: 168 / 255, green: 163 / 255, blue: 143 / 255)
    static let accent = Color(red: 224 / 255, green: 176 / 255, blue: 75 / 255)
    static let warning = Color(red: 240 / 255, green: 122 / 255, blue: 74 / 255)
    static let dimmed = Color(red: 118 / 255, green: 122 / 255, blue: 106 / 255)
    static let disabled = Color(red: 82 / 255, green: 86 / 255, blue: 74 / 255)
    static let separator = Color(red: 84 / 255, green: 92 / 255, blue: 72 / 255)
    /// The pixel bottle: a pale olive, the lit counterpart of the bottle's
    /// original dark olive, which would vanish on this background.
    static let water = Color(red: 178 / 255, green: 190 / 255, blue: 146 / 255)
    /// The cleaning card, a lighter layer over the gradient.
    static let card = Color.white.opacity(0.06)

    static var background: LinearGradient {
        LinearGradient(colors: [gradientTop, gradientBottom], startPoint: .top, endPoint: .bottom)
    }

    /// The colour of an engine role.
    static func color(for role: PanelRole) -> Color {
        switch role {
        case .primary:
            return primary
        case .secondary:
            return secondary
        case .accent:
            return accent
        case .warning:
            return warning
        case .dimmed:
            return dimmed
        case .disabled:
            return disabled
        }
    }
}
