#pragma once

#include "activity/AppActivityRecorder.hpp"
#include "model/EngineEnvironment.hpp"
#include "store/JsonSettingsStore.hpp"
#include "import/UsageImporter.hpp"

#include <filesystem>
#include <memory>

namespace tallowen::cli {

// The terminal's import engine on one support folder: its settings file, its
// activation stamps and its SQLite store, opened afresh for every run.
class TerminalImporter {
public:
    explicit TerminalImporter(const EngineEnvironment& environment);

    UsageImporter& importer() { return importer_; }

private:
    JsonSettingsStore settings_;
    AppActivityRecorder activity_;
    UsageImporter importer_;
};

}  // namespace tallowen::cli
