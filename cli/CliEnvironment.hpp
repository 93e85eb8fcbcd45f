#pragma once

#include "Options.hpp"
#include "app/EngineEnvironment.hpp"

#include <optional>
#include <string>

namespace tallowen::cli {

// The engine's environment from --home and --data (defaults: $HOME and the
// platform's support folder). Sets `error` when the home folder is missing or
// unreadable, or the data folder cannot be created.
std::optional<EngineEnvironment> environmentFromOptions(const ParsedOptions& options, std::string& error);

}  // namespace tallowen::cli
