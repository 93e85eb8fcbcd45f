#pragma once

#include "import/ImportRunReport.hpp"

#include <string>

namespace tallowen {

// The report as lines a person reads: the detected tools, the sample counts,
// the duplicates removed, the files read and reused, the time taken and the
// last error when there is one; or why the request was dropped.
std::string importReportText(const ImportRunReport& report);

}  // namespace tallowen
