#pragma once

#include "model/EngineEnvironment.hpp"
#include "import/UsageImporter.hpp"
#include "ui/LocaleFormatter.hpp"
#include "ui/MenuModel.hpp"
#include "ui/PanelLayout.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tallowen::cli {

// Every stored sample of the data folder's store; none when nothing was
// imported yet (no empty store is created by looking). Sets `error` ("Store
// illisible : …") and gives nothing when the store cannot be read.
std::optional<std::vector<UsageSample>> readStoredSamples(const EngineEnvironment& environment, std::string& error);

// The importer's published properties.
ImporterState importerState(const UsageImporter& importer);

// The panel's importer state when no import ran in this process: the last
// import from the settings and, standing in for the tools found by a run, the
// computer-side tools that have stored samples.
ImporterState storedImporterState(const EngineEnvironment& environment, const std::vector<UsageSample>& samples);

// The panel's model at `now`. The terminal follows no cloud synchronisation:
// its sync state stays empty and the panel leaves the cloud lines out.
MenuModel terminalMenuModel(const std::vector<UsageSample>& samples, const ImporterState& importer, Date now,
                            const EngineEnvironment& environment, const LocaleFormatter& locale);

// The panel drawn once, as text: the title at rest, the counter where it
// stands at `now`, laid out for `terminal` (the full panel without one).
std::string panelText(const MenuModel& model, Date now, const LocaleFormatter& locale, bool colors,
                      const std::optional<TerminalExtent>& terminal = std::nullopt);

}  // namespace tallowen::cli
