import SwiftUI

/// The one-point rule between the panel's sections.
struct SeparatorLine: View {
    var body: some View {
        Rectangle()
            .fill(Palette.separator.opacity(0.6))
            .frame(height: 1)
    }
}
