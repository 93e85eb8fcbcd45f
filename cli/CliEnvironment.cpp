#include "CliEnvironment.hpp"

#include "HelpText.hpp"
#include "base/SupportFolder.hpp"

#include <algorithm>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace tallowen::cli {
namespace {

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

}  // namespace

std::optional<EngineEnvironment> environmentFromOptions(const ParsedOptions& options, std::string& error) {
    EngineEnvironment environment;
    const auto home = options.value("--home").value_or(environmentVariable("HOME").value_or(""));
    if (home.empty()) {
        error = "no home folder: set HOME or pass --home DIR";
        return std::nullopt;
    }
    std::error_code code;
    if (!std::filesystem::is_directory(home, code) || ::access(home.c_str(), R_OK | X_OK) != 0) {
        error = "cannot read the home folder " + home;
        return std::nullopt;
    }
    environment.homeFolder = std::filesystem::absolute(home, code);
    if (const auto data = options.value("--data")) {
        environment.supportFolder = std::filesystem::absolute(*data, code);
    } else {
        environment.supportFolder = defaultSupportFolder(currentHostPlatform(), environment.homeFolder,
                                                         environmentVariable("XDG_DATA_HOME"));
    }
    std::filesystem::create_directories(environment.supportFolder, code);
    if (!std::filesystem::is_directory(environment.supportFolder, code)) {
        error = "cannot create the data folder " + environment.supportFolder.string();
        return std::nullopt;
    }
    environment.clock = systemClock();
    return environment;
}

std::optional<CommandStart> startCommand(const char* command, const std::vector<std::string>& arguments,
                                         const std::set<std::string>& valueOptions,
                                         const std::set<std::string>& flagOptions, int& exitStatus,
                                         const OptionsCheck& check) {
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
        std::fputs(std::string(helpText(command).value_or("")).c_str(), stdout);
        exitStatus = 0;
        return std::nullopt;
    }
    std::string error;
    auto options = parseOptions(arguments, valueOptions, flagOptions, error);
    if (!options || (check && !check(*options, error))) {
        std::fprintf(stderr, "tallowen: %s: %s (see tallowen help %s)\n", command, error.c_str(), command);
        exitStatus = 2;
        return std::nullopt;
    }
    auto environment = environmentFromOptions(*options, error);
    if (!environment) {
        std::fprintf(stderr, "tallowen: %s: %s\n", command, error.c_str());
        exitStatus = 1;
        return std::nullopt;
    }
    return CommandStart{std::move(*options), std::move(*environment)};
}

}  // namespace tallowen::cli
