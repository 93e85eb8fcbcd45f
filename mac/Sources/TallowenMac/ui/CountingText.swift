import SwiftUI

/// The token counter. The engine simulates the climb between imports and hands
/// each frame the text to show, already split into its number and its unit; this
/// view sets them in Doto (the unit smaller) and animates the digits' change.
struct CountingText: View {
    let text: String
    let number: String
    let unit: String?
    /// Point size of "Doto-Black"; nil leaves the surrounding font alone.
    let size: CGFloat?
    let animates: Bool
    let transitionSeconds: Double
    let color: Color

    var body: some View {
        styledText
            .foregroundStyle(color)
            .contentTransition(.numericText())
            .animation(animates ? .easeInOut(duration: transitionSeconds) : nil, value: text)
    }

    @ViewBuilder
    private var styledText: some View {
        if let size, let unit {
            HStack(alignment: .firstTextBaseline, spacing: 0) {
                Text(verbatim: number)
                    .font(PanelFonts.doto(size: size))
                Text(verbatim: unit)
                    .font(PanelFonts.doto(size: size * 0.55))
            }
        } else if let size {
            Text(verbatim: text)
                .font(PanelFonts.doto(size: size))
        } else {
            Text(verbatim: text)
        }
    }
}
