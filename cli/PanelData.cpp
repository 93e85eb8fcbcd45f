#include "PanelData.hpp"

#include "PanelRenderer.hpp"
#include "TerminalImporter.hpp"
#include "store/JsonSettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/TypewriterTitle.hpp"

#include <set>

namespace tallowen::cli {

std::optional<std::vector<UsageSample>> readStoredSamples(const EngineEnvironment& environment, std::string& error) {
    const auto location = storeLocation(environment);
    std::error_code ignored;
    if (!std::filesystem::exists(location, ignored)) return std::vector<UsageSample>{};
    try {
        SqliteSampleStore store(location, SqliteSampleStore::Access::readOnly);
        return store.fetchAll();
    } catch (const StoreError& failure) {
        error = unreadableStoreText(failure);
        return std::nullopt;
    }
}

ImporterState importerState(const UsageImporter& importer) {
    return ImporterState{importer.isImporting(), importer.lastImport(), importer.lastError(), importer.detectedTools(),
                         importer.purgeProgress()};
}

ImporterState storedImporterState(const EngineEnvironment& environment, const std::vector<UsageSample>& samples) {
    ImporterState state;
    state.lastImport = JsonSettingsStore::inSupportFolder(environment.supportFolder).dateValue(lastImportSettingsKey);
    std::set<UsageTool> tools;
    for (const UsageSample& sample : samples)
        if (const auto tool = usageToolFromRawValue(sample.tool); tool && isComputerSide(*tool)) tools.insert(*tool);
    state.detectedTools.assign(tools.begin(), tools.end());
    return state;
}

MenuModel terminalMenuModel(const std::vector<UsageSample>& samples, const ImporterState& importer, Date now,
                            const EngineEnvironment& environment, const LocaleFormatter& locale) {
    return computeMenuModel(MenuInputs{samples, importer, CloudSyncState{}, now, environment.calendar, locale});
}

std::string panelText(const MenuModel& model, Date now, const LocaleFormatter& locale, bool colors,
                      const std::optional<TerminalExtent>& terminal) {
    const CountingText counter = menuTokenCounter(model, locale);
    CountingAnchor anchor;
    anchor.appear(counter.value, now);
    PanelFrame frame;
    frame.title = typewriterShownText(typewriterWordmark, true);
    frame.tokenCounter = counter.textAt(anchor, now, locale);
    return joinedLines(fittedPanel(model, frame, TerminalStyle(colors), terminal, false));
}

}  // namespace tallowen::cli
