import Foundation
import os
import TallowenKit

/// Paces the panel: asks the engine for a frame and remembers how long that
/// frame stays true, which is when the timeline next redraws.
final class PanelFrameClock: Sendable {
    private struct State: Sendable {
        var intervalSeconds: Double = 1
        var lastDate: Date = .distantPast
        var inputRevision: Int = -1
    }

    private let state = OSAllocatedUnfairLock(initialState: State())

    /// Seconds from the last frame to the next one, as the engine said.
    var intervalSeconds: Double {
        state.withLock { $0.intervalSeconds }
    }

    /// The frame to draw. A scheduled tick draws at its own date; a redraw
    /// caused by new inputs (samples, importer, sync) comes between ticks, where
    /// the tick's date is stale, so it draws at the present. Dates never go
    /// backwards, since the engine's typewriter and counter move forward only.
    @MainActor
    func frame(of session: PanelSession, scheduledAt date: Date, inputRevision: Int) -> PanelFrame {
        let drawDate = state.withLock { current -> Date in
            let wanted = current.inputRevision == inputRevision ? date : Date.now
            let chosen = max(wanted, current.lastDate)
            current.lastDate = chosen
            current.inputRevision = inputRevision
            return chosen
        }
        let frame = session.frame(at: drawDate)
        let nextFrameSeconds = frame.nextFrameSeconds
        state.withLock { $0.intervalSeconds = nextFrameSeconds }
        return frame
    }
}
