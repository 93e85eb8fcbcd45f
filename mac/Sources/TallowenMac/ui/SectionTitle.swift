import SwiftUI

/// The small caps title above each block of the panel.
struct SectionTitle: View {
    let text: String

    var body: some View {
        Text(verbatim: LocalizedText.lookUp(text))
            .font(.system(size: 9, weight: .semibold))
            .tracking(1.2)
            .foregroundStyle(Palette.secondary)
    }
}
