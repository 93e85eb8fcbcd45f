#pragma once

#include "readers/UsageReaders.hpp"

#include <string>

namespace tallowen {

// What one reading of the logs found, before anything is stored: the detected
// tools, one row per day and tool (quota percents and plan when the day has
// them) and the file counts, as a table.
std::string scanReportText(const LogReadOutcome& outcome);

// The same as JSON: {"detected":[raw tool values],"samples":[…]}, each sample
// under its stored field names, without updatedAt.
std::string scanReportJson(const LogReadOutcome& outcome);

}  // namespace tallowen
