import SwiftUI

/// The pixel bottle at the level the engine chose, drawn from the level's 44
/// rows of 24 cells. The water figure beside it says the same thing in words,
/// so the picture stays out of accessibility.
struct BottleView: View {
    let rows: [String]
    let height: CGFloat
    let color: Color

    private static let bitmapColumns: CGFloat = 24
    private static let bitmapRows: CGFloat = 44

    var body: some View {
        PixelGridShape(rows: rows)
            .fill(color)
            .frame(width: height * Self.bitmapColumns / Self.bitmapRows, height: height)
            .accessibilityHidden(true)
    }
}
