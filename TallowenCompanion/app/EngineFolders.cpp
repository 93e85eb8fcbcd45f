#include "app/EngineFolders.hpp"

#include "base/SupportFolder.hpp"

#include <unistd.h>

namespace tallowen {

Result<EngineEnvironment> engineEnvironment(const FolderChoice& choice) {
    const std::string home = choice.homeFolder.value_or(choice.homeVariable.value_or(""));
    if (home.empty()) return failure("no home folder: set HOME or pass --home DIR");
    std::error_code code;
    if (!std::filesystem::is_directory(home, code) || ::access(home.c_str(), R_OK | X_OK) != 0)
        return failure("cannot read the home folder " + home);
    EngineEnvironment environment;
    environment.homeFolder = std::filesystem::absolute(home, code);
    environment.supportFolder =
        choice.dataFolder
            ? std::filesystem::absolute(*choice.dataFolder, code)
            : defaultSupportFolder(currentHostPlatform(), environment.homeFolder, choice.xdgDataHome);
    std::filesystem::create_directories(environment.supportFolder, code);
    if (!std::filesystem::is_directory(environment.supportFolder, code))
        return failure("cannot create the data folder " + environment.supportFolder.string());
    environment.clock = systemClock();
    return environment;
}

}  // namespace tallowen
