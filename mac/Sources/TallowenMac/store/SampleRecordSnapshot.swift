import Foundation
import SwiftData
import TallowenKit

/// The menu's live query turned into the engine's values. Reading every
/// property here is also what makes SwiftUI redraw when a sample changes in
/// place (an import updating today's figures, a record arriving from iCloud).
enum SampleRecordSnapshot {
    static func records(of samples: [UsageSample]) -> [SampleRecord] {
        let identifierText = PersistentIdentifierText()
        return samples.map { sample in
            // An identifier that cannot be printed only loses its place in the
            // tie-break between two equally recent duplicates.
            let id = (try? identifierText.text(of: sample.persistentModelID)) ?? ""
            return sample.record(id: id)
        }
    }
}
