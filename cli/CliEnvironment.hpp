#pragma once

#include "Options.hpp"
#include "base/Result.hpp"
#include "model/EngineEnvironment.hpp"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tallowen::cli {

struct CommandStart {
    ParsedOptions options;
    EngineEnvironment environment;
};

// Why a command could not start: its whole line for the error output, and
// its exit status (2 for options it does not take, 1 for a home or data
// folder it cannot use).
struct CommandFailure {
    int exitStatus = 1;
    std::string line;
};

// What a command checks of its options before any folder is looked at; the
// reason it refuses them, or nothing.
using OptionsCheck = std::function<std::optional<std::string>(const ParsedOptions& options)>;

// Reads a command's options (always --home and --data too) and builds its
// environment from them. Lines read "tallowen: <command>: <reason>"; without a
// command (`tallowen` alone) "tallowen: <reason>", pointing to --help for
// options.
Result<CommandStart, CommandFailure> startCommand(const char* command, const std::vector<std::string>& arguments,
                                                  std::set<std::string> valueOptions,
                                                  const std::set<std::string>& flagOptions,
                                                  const OptionsCheck& check = {});

// Prints the failure's line; its exit status.
int reported(const CommandFailure& failure);

}  // namespace tallowen::cli
