#include "TerminalImporter.hpp"

#include "import/ImportStateFile.hpp"
#include "store/SqliteSampleStore.hpp"

namespace tallowen::cli {

std::filesystem::path storeLocation(const EngineEnvironment& environment) {
    return environment.supportFolder / SqliteSampleStore::fileName;
}

TerminalImporter::TerminalImporter(const EngineEnvironment& environment)
    : settings_(JsonSettingsStore::inSupportFolder(environment.supportFolder)),
      activity_(AppActivityRecorder::locationBeside(ImportStateFile(environment.supportFolder).location())),
      importer_(
          environment,
          [store = storeLocation(environment)]() -> std::unique_ptr<SampleStore> {
              return std::make_unique<SqliteSampleStore>(store);
          },
          settings_, activity_) {}

}  // namespace tallowen::cli
