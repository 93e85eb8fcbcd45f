import AppKit
import SwiftUI
import TallowenKit

/// The menu itself, drawn from one engine frame: today's figures, the water
/// bottle, the week, the quotas, the detected tools, the cloud state and the
/// commands. Every text, number, colour role and visibility comes from the
/// frame; this view only lays them out and wires the buttons.
struct MacMenuContent: View {
    let frame: PanelFrame
    let importer: UsageImporter
    let setLoginItem: @MainActor @Sendable (Bool) -> Void

    /// The height the scrolling body needs; it grows the panel up to
    /// `tallestBodyPoints`, past which the body scrolls.
    @State private var sectionsHeight: CGFloat = 0

    /// Keeps the panel on a 13-inch screen under the menu bar.
    private static let tallestBodyPoints: CGFloat = 520

    var body: some View {
        VStack(alignment: .leading, spacing: 0) {
            PanelTitleBar(
                titleText: frame.title.text,
                titleRole: frame.title.role,
                showsImportIndicator: frame.showsImportIndicator
            )
            ScrollView(.vertical) {
                sections
                    .onGeometryChange(for: CGFloat.self, of: { proxy in proxy.size.height }) { height in
                        sectionsHeight = height
                    }
            }
            .scrollIndicators(.automatic)
            .frame(height: min(sectionsHeight, Self.tallestBodyPoints))
            cloudWarning
            loginItem
            updateButton
            footer
        }
        .frame(width: 290, alignment: .leading)
        .background(Palette.background)
        .onAppear {
            ImportScheduler.shared.start(importer: importer)
        }
    }

    // MARK: Scrolling body

    private var sections: some View {
        VStack(alignment: .leading, spacing: 12) {
            todayBlock
            waterBlock
            if !frame.toolRows.isEmpty {
                toolRows
            }
            SeparatorLine()
            weekBlock
            if let quotas = frame.quotas {
                SeparatorLine()
                VStack(alignment: .leading, spacing: 8) {
                    SectionTitle(text: quotas.title)
                    ForEach(quotas.blocks, id: \.tool) { block in
                        MacQuotaBlock(label: block.label, plan: block.plan) {
                            ForEach(block.bars, id: \.title) { bar in
                                MacQuotaBar(
                                    title: bar.title,
                                    fillFraction: bar.fillFraction,
                                    percentText: bar.percentText,
                                    role: bar.role,
                                    resetText: bar.resetText
                                )
                            }
                        }
                    }
                }
            }
            detectedTools
            if let errorLine = frame.errorLine {
                Text(verbatim: errorLine)
                    .font(.system(size: 10))
                    .foregroundStyle(Palette.warning)
                    .fixedSize(horizontal: false, vertical: true)
            }
        }
        .padding(.horizontal, 14)
        .padding(.vertical, 4)
        .frame(maxWidth: .infinity, alignment: .leading)
    }

    private var todayBlock: some View {
        let today = frame.today
        return VStack(alignment: .leading, spacing: 4) {
            SectionTitle(text: today.title)
            HStack(alignment: .firstTextBaseline, spacing: 10) {
                Text(verbatim: today.requestsText)
                    .font(PanelFonts.doto(size: 42))
                    .foregroundStyle(Palette.primary)
                VStack(alignment: .leading, spacing: 2) {
                    Text(verbatim: LocalizedText.lookUp(today.requestsLabel))
                        .font(.system(size: 9, weight: .medium))
                        .foregroundStyle(Palette.secondary)
                    HStack(alignment: .firstTextBaseline, spacing: 4) {
                        CountingText(
                            text: today.counter.text,
                            number: today.counter.number,
                            unit: today.counter.unit,
                            size: 18,
                            animates: today.counter.animates,
                            transitionSeconds: today.counter.transitionSeconds,
                            color: Palette.primary
                        )
                        Text(verbatim: LocalizedText.lookUp(today.tokensLabel))
                            .font(.system(size: 9, weight: .medium))
                            .foregroundStyle(Palette.secondary)
                    }
                }
            }
            Text(verbatim: today.costText)
                .font(.system(size: 10))
                .foregroundStyle(Palette.secondary)
        }
    }

    private var waterBlock: some View {
        let today = frame.today
        return VStack(alignment: .leading, spacing: 4) {
            SectionTitle(text: today.waterTitle)
            HStack(alignment: .center, spacing: 10) {
                BottleView(rows: today.bottleRows, height: 32, color: Palette.water)
                VStack(alignment: .leading, spacing: 2) {
                    HStack(alignment: .firstTextBaseline, spacing: 6) {
                        Text(verbatim: today.waterText)
                            .font(.system(size: 12, weight: .semibold))
                            .foregroundStyle(Palette.primary)
                        Text(verbatim: today.equivalentText)
                            .font(.system(size: 10))
                            .foregroundStyle(Palette.secondary)
                    }
                    Text(verbatim: LocalizedText.lookUp(today.comparisonLine))
                        .font(.system(size: 9))
                        .foregroundStyle(Palette.secondary)
                }
            }
        }
    }

    private var toolRows: some View {
        VStack(alignment: .leading, spacing: 3) {
            ForEach(frame.toolRows, id: \.tool) { row in
                HStack(alignment: .firstTextBaseline, spacing: 6) {
                    Text(verbatim: LocalizedText.lookUp(row.label))
                        .font(.system(size: 10, weight: .medium))
                        .foregroundStyle(Palette.primary)
                    Text(verbatim: row.figuresText)
                        .font(.system(size: 10))
                        .foregroundStyle(Palette.secondary)
                }
            }
        }
    }

    private var weekBlock: some View {
        VStack(alignment: .leading, spacing: 4) {
            SectionTitle(text: frame.week.title)
            Text(verbatim: frame.week.line)
                .font(.system(size: 10, weight: .medium))
                .foregroundStyle(Palette.primary)
        }
    }

    private var detectedTools: some View {
        VStack(alignment: .leading, spacing: 4) {
            SectionTitle(text: frame.detectedTools.title)
            Text(verbatim: LocalizedText.lookUp(frame.detectedTools.text))
                .font(.system(size: 10, weight: .medium))
                .foregroundStyle(Palette.color(for: frame.detectedTools.role))
                .fixedSize(horizontal: false, vertical: true)
        }
    }

    // MARK: Below the body

    @ViewBuilder
    private var cloudWarning: some View {
        if let warning = frame.cloudWarning {
            HStack(alignment: .center, spacing: 6) {
                if warning.kind == "syncing" {
                    ProgressView()
                        .controlSize(.small)
                    Text(verbatim: LocalizedText.lookUp(warning.text))
                        .font(.system(size: 10, weight: .medium))
                        .foregroundStyle(Palette.primary)
                        .opacity(0.7)
                } else {
                    Image(systemName: "exclamationmark.triangle.fill")
                        .foregroundStyle(Palette.color(for: warning.role))
                    Text(verbatim: LocalizedText.lookUp(warning.text))
                        .font(.system(size: 10, weight: .medium))
                        .foregroundStyle(Palette.primary)
                        .fixedSize(horizontal: false, vertical: true)
                }
                if warning.showsRelaunch {
                    Spacer(minLength: 4)
                    Button(LocalizedText.lookUp(warning.relaunchLabel)) {
                        AppRelauncher.relaunch()
                    }
                    .buttonStyle(.plain)
                    .font(.system(size: 9, weight: .semibold))
                    .foregroundStyle(Palette.color(for: warning.role))
                }
            }
            .padding(.horizontal, 14)
            .padding(.top, 8)
        }
    }

    @ViewBuilder
    private var loginItem: some View {
        if let loginItem = frame.loginItem {
            let setLoginItem = self.setLoginItem
            Toggle(isOn: Binding(get: { loginItem.isOn }, set: { @MainActor isOn in setLoginItem(isOn) })) {
                Text(verbatim: LocalizedText.lookUp(loginItem.label))
                    .font(.system(size: 10, weight: .medium))
                    .foregroundStyle(Palette.primary)
            }
            .toggleStyle(.checkbox)
            .padding(.horizontal, 14)
            .padding(.top, 8)
        }
    }

    @ViewBuilder
    private var updateButton: some View {
        if let updateButton = frame.updateButton {
            Button(LocalizedText.lookUp(updateButton.label)) {
                UpdateChecker.shared.checkForUpdates()
            }
            .buttonStyle(.plain)
            .font(.system(size: 9, weight: .medium))
            .foregroundStyle(Palette.primary)
            .opacity(0.6)
            .padding(.horizontal, 14)
            .padding(.top, 6)
        }
    }

    private var footer: some View {
        let footer = frame.footer
        return HStack(alignment: .center, spacing: 10) {
            Button(LocalizedText.lookUp(footer.importLabel)) {
                Task { await importer.runImport() }
            }
            .disabled(!footer.importEnabled)
            .foregroundStyle(Palette.color(for: footer.importRole))
            Button(LocalizedText.lookUp(footer.syncLabel)) {
                AppRelauncher.relaunch()
            }
            .foregroundStyle(Palette.primary)
            Spacer(minLength: 4)
            VStack(alignment: .trailing, spacing: 2) {
                Group {
                    if let lastImportText = footer.lastImportText {
                        Text(verbatim: lastImportText)
                    }
                    if let syncStatusLine = footer.syncStatusLine {
                        Text(verbatim: syncStatusLine)
                    }
                }
                .font(.system(size: 9))
                .tracking(0)
                .foregroundStyle(Palette.primary)
                .opacity(0.5)
                if let badge = footer.developmentBadge {
                    Text(verbatim: badge)
                        .font(.system(size: 8, weight: .semibold))
                        .tracking(1.0)
                        .foregroundStyle(Palette.warning)
                        .help(LocalizedText.lookUp(footer.developmentBadgeHelp))
                }
            }
            Button(LocalizedText.lookUp(footer.quitLabel)) {
                NSApplication.shared.terminate(nil)
            }
            .foregroundStyle(Palette.primary)
        }
        .buttonStyle(.plain)
        .font(.system(size: 10, weight: .semibold))
        .tracking(0.5)
        .padding(.horizontal, 14)
        .padding(.vertical, 10)
    }
}
