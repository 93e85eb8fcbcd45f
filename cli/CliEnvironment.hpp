#pragma once

#include "Options.hpp"
#include "model/EngineEnvironment.hpp"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tallowen::cli {

// The engine's environment from --home and --data (defaults: $HOME and the
// platform's support folder). Sets `error` when the home folder is missing or
// unreadable, or the data folder cannot be created.
std::optional<EngineEnvironment> environmentFromOptions(const ParsedOptions& options, std::string& error);

struct CommandStart {
    ParsedOptions options;
    EngineEnvironment environment;
};

// What a command checks of its options before any folder is looked at; false,
// with `error` set, refuses them.
using OptionsCheck = std::function<bool(const ParsedOptions& options, std::string& error)>;

// Reads a command's options and builds its environment. On failure it prints
// "tallowen: <command>: <reason>" and sets `exitStatus`: 2 for options the
// command does not take, 1 for a home or data folder it cannot use. With
// --help anywhere it prints the command's help instead and sets 0.
std::optional<CommandStart> startCommand(const char* command, const std::vector<std::string>& arguments,
                                         const std::set<std::string>& valueOptions,
                                         const std::set<std::string>& flagOptions, int& exitStatus,
                                         const OptionsCheck& check = {});

}  // namespace tallowen::cli
