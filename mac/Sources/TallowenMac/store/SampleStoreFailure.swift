import Foundation

/// A store request the SwiftData adapter cannot carry out. Its description reaches
/// the menu through the engine's last-error line, so it is written in French.
enum SampleStoreFailure: LocalizedError {
    /// The engine named a record this adapter never fetched or inserted.
    case unknownRecord(id: String)

    var errorDescription: String? {
        switch self {
        case .unknownRecord:
            return "mesure introuvable dans ce contexte du store"
        }
    }
}
