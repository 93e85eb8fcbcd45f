import SwiftUI

/// The wordmark and taglines as the engine types them, cursor included: each
/// frame carries the text typed so far followed by "_" or a space.
struct TypewriterTitle: View {
    let text: String
    let size: CGFloat
    let color: Color

    var body: some View {
        Text(verbatim: text)
            .font(PanelFonts.silkscreen(size: size))
            .tracking(1.0)
            .foregroundStyle(color)
            .lineLimit(1)
    }
}
