#pragma once

#include "import/ImportRunReport.hpp"

#include <string>
#include <string_view>

namespace tallowen {

// Why a request was dropped, in a line a person reads.
std::string_view dropReason(ImportRunReport::Outcome outcome);

// The report as one JSON object: outcome ("completed" or "dropped", with the
// reason), detectedTools, the sample and file counts, elapsedSeconds and
// lastError (null when none).
std::string importReportJson(const ImportRunReport& report);

}  // namespace tallowen
