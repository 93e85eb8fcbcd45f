/// Hands the purge's progress from its task to the main actor.
final class PurgeProgressRelay: Sendable {
    let deliver: @Sendable (Double) -> Void

    init(deliver: @escaping @Sendable (Double) -> Void) {
        self.deliver = deliver
    }
}
