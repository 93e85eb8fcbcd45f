import SwiftUI
import TallowenKit

/// What the panel shows, and all it shows, while the one-time duplicate purge
/// runs: its progress on a card under the title bar.
struct CleaningView: View {
    let titleText: String
    let titleRole: PanelRole
    let heading: String
    let percentText: String
    let barFraction: Double
    let note: String

    var body: some View {
        VStack(alignment: .leading, spacing: 10) {
            PanelTitleBar(titleText: titleText, titleRole: titleRole, showsImportIndicator: false)
            VStack(alignment: .leading, spacing: 8) {
                SectionTitle(text: heading)
                Text(verbatim: percentText)
                    .font(PanelFonts.doto(size: 42))
                    .foregroundStyle(Palette.primary)
                FractionBar(fraction: barFraction, fill: Palette.primary)
                Text(verbatim: LocalizedText.lookUp(note))
                    .font(.system(size: 10))
                    .foregroundStyle(Palette.secondary)
                    .fixedSize(horizontal: false, vertical: true)
            }
            .padding(14)
            .frame(maxWidth: .infinity, alignment: .leading)
            .background(RoundedRectangle(cornerRadius: 6).fill(Palette.card))
            .padding(.horizontal, 14)
            .padding(.bottom, 14)
        }
        .frame(width: 320, alignment: .leading)
        .background(Palette.background)
    }
}
