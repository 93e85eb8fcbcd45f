#pragma once

#include "activity/AppActivityRecorder.hpp"
#include "import/UsageImporter.hpp"
#include "model/EngineEnvironment.hpp"
#include "store/JsonSettingsStore.hpp"

namespace tallowen {

// The import engine kept whole in one support folder: its settings file, its
// activation stamps and its SQLite store, opened afresh for every run (and
// once more for the purge, on its own thread). What the terminal runs; the
// Mac application brings its own settings and store instead.
class SupportFolderImporter {
public:
    explicit SupportFolderImporter(const EngineEnvironment& environment);

    UsageImporter& importer() { return importer_; }

private:
    JsonSettingsStore settings_;
    AppActivityRecorder activity_;
    UsageImporter importer_;
};

}  // namespace tallowen
