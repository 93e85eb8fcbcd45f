import SwiftData
import SwiftUI
import TallowenKit

/// The root of the menu-bar panel. It feeds the engine's panel session with the
/// live store query and the services' state, and redraws on the engine's own
/// schedule: each frame says when the next one is due. While the duplicate
/// purge runs, the frame carries the cleaning card and the panel shows only that.
struct MacMenuView: View {
    let importer: UsageImporter
    let session: PanelSession
    let syncStatus: CloudSyncStatus
    let launchAtLogin: LaunchAtLogin
    let cloudEnvironment: String?

    /// Every stored sample, phone tools included, as the store has them now.
    @Query private var rawSamples: [UsageSample]
    @State private var frameClock = PanelFrameClock()
    /// Bumped after each hand-over to the session, so that the panel draws the
    /// change at once instead of at the next tick.
    @State private var inputRevision = 0

    var body: some View {
        TimelineView(PanelFrameSchedule(clock: frameClock)) { timeline in
            panel(for: frameClock.frame(of: session, scheduledAt: timeline.date, inputRevision: inputRevision))
        }
        .modifier(PanelSessionFeed(
            session: session,
            records: SampleRecordSnapshot.records(of: rawSamples),
            importer: importer,
            syncStatus: syncStatus,
            launchAtLogin: launchAtLogin,
            cloudEnvironment: cloudEnvironment,
            inputsChanged: { inputRevision &+= 1 }
        ))
    }

    @ViewBuilder
    private func panel(for frame: PanelFrame) -> some View {
        if let cleaning = frame.cleaning {
            CleaningView(
                titleText: frame.title.text,
                titleRole: frame.title.role,
                heading: cleaning.title,
                percentText: cleaning.percentText,
                barFraction: cleaning.barFraction,
                note: cleaning.note
            )
        } else {
            MacMenuContent(frame: frame, importer: importer, setLoginItem: loginItemSetter)
        }
    }

    /// The checkbox asks the platform, then shows what the platform now says:
    /// a registration waiting for approval stays unticked. The checkbox's
    /// binding takes sendable closures, so this one holds only sendable values
    /// (the main-actor services and the revision's binding), never the view.
    private var loginItemSetter: @MainActor @Sendable (Bool) -> Void {
        let launchAtLogin = self.launchAtLogin
        let session = self.session
        let revision = $inputRevision
        return { enabled in
            launchAtLogin.setEnabled(enabled)
            session.loginItemChanged(launchAtLogin.isEnabled)
            revision.wrappedValue &+= 1
        }
    }
}
