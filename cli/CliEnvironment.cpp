#include "CliEnvironment.hpp"

#include "app/EngineFolders.hpp"

#include <cstdio>
#include <cstdlib>

namespace tallowen::cli {
namespace {

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

}  // namespace

Result<CommandStart, CommandFailure> startCommand(const char* command, const std::vector<std::string>& arguments,
                                                  std::set<std::string> valueOptions,
                                                  const std::set<std::string>& flagOptions,
                                                  const OptionsCheck& check) {
    const std::string prefix = command ? "tallowen: " + std::string(command) + ": " : "tallowen: ";
    valueOptions.insert({"--home", "--data"});
    auto options = parseOptions(arguments, valueOptions, flagOptions);
    std::optional<std::string> refused;
    if (!options) refused = options.error();
    else if (check) refused = check(*options);
    if (refused) return failure(CommandFailure{2, prefix + *refused + (command ? "" : " (see tallowen --help)")});
    auto environment = engineEnvironment(FolderChoice{options->value("--home"), options->value("--data"),
                                                      environmentVariable("HOME"), environmentVariable("XDG_DATA_HOME")});
    if (!environment) return failure(CommandFailure{1, prefix + environment.error()});
    return CommandStart{std::move(*options), std::move(*environment)};
}

int reported(const CommandFailure& failure) {
    std::fprintf(stderr, "%s\n", failure.line.c_str());
    return failure.exitStatus;
}

}  // namespace tallowen::cli
