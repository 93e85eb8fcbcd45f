#pragma once

#include "import/UsageImporter.hpp"

namespace tallowen::cli {

// Whether a progress line may be drawn: on an error output that is a
// terminal, unless --quiet asked for silence.
bool progressLineWanted(bool quiet);

// One whole run. With `showsProgress`, once the reading has lasted half a
// second a line on the error output follows it in place (logs read, MB,
// MB/s, Cursor's database), then the duplicate purge; the line is erased
// before the run's report comes back.
ImportRunReport importShowingProgress(UsageImporter& importer, bool showsProgress);

}  // namespace tallowen::cli
