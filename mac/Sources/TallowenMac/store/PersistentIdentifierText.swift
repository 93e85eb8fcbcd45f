import Foundation
import SwiftData

/// Prints a record's persistent identifier as text for the engine.
///
/// The text is the identifier's own `Codable` form, written as JSON with sorted
/// keys and unescaped slashes: it holds the store's UUID, the entity name and the
/// primary key (the "x-coredata://<store>/UsageSample/p<n>" URI among them), so
/// the same saved record always prints the same text in every context and every
/// launch, two records never share one, and texts order by store, then entity,
/// then key. A record inserted but not saved yet prints its temporary identifier,
/// which the engine never keeps past the save.
///
/// Texts are never decoded back: a decoded identifier does not compare equal to
/// the one the store made, so each adapter remembers the records it handed out.
struct PersistentIdentifierText {
    private let encoder: JSONEncoder

    init() {
        encoder = JSONEncoder()
        encoder.outputFormatting = [.sortedKeys, .withoutEscapingSlashes]
    }

    func text(of identifier: PersistentIdentifier) throws -> String {
        String(decoding: try encoder.encode(identifier), as: UTF8.self)
    }
}
