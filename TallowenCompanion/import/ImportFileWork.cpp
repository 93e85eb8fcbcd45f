#include "import/ImportFileWork.hpp"

#include "import/ImportStateFile.hpp"

#include <exception>

namespace tallowen {

void ImportFileWork::run() {
    try {
        const ImportStateFile stateFile(supportFolder);
        ImportState state = stateFile.load();
        logs = readLogs(homeFolder, state.files, calendar, progress.get());
        // A failed save only makes the next run read every file again.
        stateFile.save(state);
    } catch (const std::exception& error) {
        logs = LogReadOutcome{};
        failure = error.what();
    }
}

}  // namespace tallowen
