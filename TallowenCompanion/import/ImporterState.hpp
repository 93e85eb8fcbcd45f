#pragma once

#include "model/Date.hpp"
#include "model/UsageTool.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// The importer's published properties, as a panel reads them.
struct ImporterState {
    bool isImporting = false;
    std::optional<Date> lastImport;
    std::optional<std::string> lastError;
    std::vector<UsageTool> detectedTools;
    std::optional<double> purgeProgress;
    // No run of this importer found the tools: none ran in this process, or
    // its request was dropped because another process imports into the same
    // folder. The computer-side tools that have stored samples stand in.
    bool detectedToolsFromStore = false;
};

}  // namespace tallowen
