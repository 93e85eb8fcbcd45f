#include "import/ImportFileWork.hpp"

#include "import/CursorDayCacheFile.hpp"
#include "import/ImportStateFile.hpp"

#include <exception>

namespace tallowen {

void ImportFileWork::run() {
    try {
        const ImportStateFile stateFile(supportFolder);
        ImportState state = stateFile.load();
        const CursorDayCacheFile cursorFile(supportFolder);
        std::optional<CursorDayCache> cursorCache = cursorFile.load();
        const auto cursorStamps = cursorStampsOf(cursorCache);
        ScanSettings settings;
        settings.progress = progress.get();
        logs = readLogs(homeFolder, state.files, cursorCache, calendar, settings);
        // Only a file read renews an entry: with none, the state on disk is the
        // one loaded. A failed save only makes the next run read every file again.
        if (logs.counters.filesRead > 0) stateFile.save(state);
        if (cursorStampsOf(cursorCache) != cursorStamps) cursorFile.save(cursorCache);
    } catch (const std::exception& error) {
        logs = LogReadOutcome{};
        failure = error.what();
    }
}

}  // namespace tallowen
