import SwiftUI

/// A six-point bar filled from the leading edge: the quota bars and the
/// cleaning progress. The engine hands the fraction already clamped to 0...1.
struct FractionBar: View {
    let fraction: Double
    let fill: Color

    var body: some View {
        GeometryReader { proxy in
            ZStack(alignment: .leading) {
                Rectangle()
                    .fill(Palette.primary.opacity(0.18))
                Rectangle()
                    .fill(fill)
                    .frame(width: proxy.size.width * CGFloat(fraction))
            }
        }
        .frame(height: 6)
    }
}
