#pragma once

#include "import/ImporterState.hpp"
#include "model/EngineEnvironment.hpp"

#include <string>
#include <vector>

namespace tallowen::cli {

// Each command takes the arguments after its name and returns the exit status.
int runScanCommand(const std::vector<std::string>& arguments);
int runImportCommand(const std::vector<std::string>& arguments);
int runDaysCommand(const std::vector<std::string>& arguments);
int runWatchCommand(const std::vector<std::string>& arguments);
int runPanelCommand(const std::vector<std::string>& arguments);
int runSummaryCommand(const std::vector<std::string>& arguments);
// `tallowen` alone: one import, then the panel.
int runDefaultCommand(const std::vector<std::string>& arguments);

// Prints the panel once, at rest, from the store of the data folder; 1, with
// "tallowen: <errorPrefix><reason>", when the store cannot be read.
int printPanelOnce(const EngineEnvironment& environment, const ImporterState& importer, const char* errorPrefix);

}  // namespace tallowen::cli
