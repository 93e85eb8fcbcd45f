#include "app/SupportFolderImporter.hpp"

#include "import/ImportStateFile.hpp"
#include "store/SqliteSampleStore.hpp"

namespace tallowen {

SupportFolderImporter::SupportFolderImporter(const EngineEnvironment& environment)
    : settings_(JsonSettingsStore::inSupportFolder(environment.supportFolder)),
      activity_(AppActivityRecorder::locationBeside(ImportStateFile(environment.supportFolder).location())),
      importer_(
          environment,
          [store = SqliteSampleStore::locationIn(environment.supportFolder)]() -> std::unique_ptr<SampleStore> {
              return std::make_unique<SqliteSampleStore>(store);
          },
          settings_, activity_) {}

}  // namespace tallowen
