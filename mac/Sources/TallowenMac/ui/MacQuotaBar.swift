import SwiftUI
import TallowenKit

/// One rate-limit window of a tool: its title ("5H", "7J"), the fill, the
/// percentage and the time to the reset, all as the engine worded them.
struct MacQuotaBar: View {
    let title: String
    let fillFraction: Double
    let percentText: String
    let role: PanelRole
    let resetText: String?

    var body: some View {
        HStack(spacing: 6) {
            Text(verbatim: title)
                .font(.system(size: 9, weight: .semibold, design: .monospaced))
                .tracking(0.5)
                .foregroundStyle(Palette.secondary)
                .frame(width: 20, alignment: .leading)
            FractionBar(fraction: fillFraction, fill: Palette.color(for: role))
            Text(verbatim: percentText)
                .font(.system(size: 10, weight: .semibold))
                .foregroundStyle(Palette.color(for: role))
                .frame(width: 32, alignment: .trailing)
            if let resetText {
                Text(verbatim: resetText)
                    .font(.system(size: 9))
                    .foregroundStyle(Palette.secondary)
                    .frame(width: 56, alignment: .trailing)
            }
        }
    }
}
