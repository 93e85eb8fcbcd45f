import CoreText
import Foundation

/// Makes the bundle's font files usable by name in this process only. A file
/// that is missing or refused is skipped: the panel then falls back to the
/// system face, which is no reason to stop the app.
enum BundledFonts {
    static func register(named names: [String], in bundle: Bundle) {
        for name in names {
            guard let url = bundle.url(forResource: name, withExtension: "ttf") else { continue }
            _ = CTFontManagerRegisterFontsForURL(url as CFURL, .process, nil)
        }
    }
}
