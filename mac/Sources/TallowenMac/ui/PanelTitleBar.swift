import SwiftUI
import TallowenKit

/// The bar at the top of the menu and of the cleaning view: the accent square,
/// the typewriter title and, while an import runs, a spinner.
struct PanelTitleBar: View {
    let titleText: String
    let titleRole: PanelRole
    let showsImportIndicator: Bool

    var body: some View {
        HStack(spacing: 8) {
            RoundedRectangle(cornerRadius: 2)
                .fill(Palette.accent.opacity(0.7))
                .frame(width: 8, height: 8)
            TypewriterTitle(text: titleText, size: 13, color: Palette.color(for: titleRole))
            Spacer(minLength: 0)
            if showsImportIndicator {
                ProgressView()
                    .controlSize(.small)
            }
        }
        .padding(.horizontal, 14)
        .padding(.vertical, 10)
    }
}
