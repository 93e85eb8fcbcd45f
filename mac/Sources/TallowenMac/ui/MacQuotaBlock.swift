import SwiftUI

/// One tool's quotas: its label, its plan when it has one, then its bars.
struct MacQuotaBlock<Bars: View>: View {
    let label: String
    let plan: String?
    @ViewBuilder let bars: Bars

    var body: some View {
        VStack(alignment: .leading, spacing: 4) {
            HStack(alignment: .firstTextBaseline, spacing: 6) {
                Text(verbatim: LocalizedText.lookUp(label))
                    .font(.system(size: 10, weight: .medium))
                    .foregroundStyle(Palette.primary)
                if let plan {
                    Text(verbatim: plan)
                        .font(.system(size: 8, weight: .medium))
                        .foregroundStyle(Palette.secondary)
                }
            }
            bars
        }
    }
}
