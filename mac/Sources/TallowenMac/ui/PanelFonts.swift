import SwiftUI

/// The two faces registered from the bundle at start-up. When a font file is
/// missing, SwiftUI falls back to the system face at the same size.
enum PanelFonts {
    static func doto(size: CGFloat) -> Font {
        .custom("Doto-Black", size: size)
    }

    static func silkscreen(size: CGFloat) -> Font {
        .custom("Silkscreen-Regular", size: size)
    }
}
