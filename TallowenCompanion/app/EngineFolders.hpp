#pragma once

#include "base/Result.hpp"
#include "model/EngineEnvironment.hpp"

#include <optional>
#include <string>

namespace tallowen {

// Where the engine is asked to look: folders a person named, and the process
// variables that stand in when they did not.
struct FolderChoice {
    std::optional<std::string> homeFolder;
    std::optional<std::string> dataFolder;
    // $HOME and $XDG_DATA_HOME.
    std::optional<std::string> homeVariable;
    std::optional<std::string> xdgDataHome;
};

// The engine's environment on the chosen folders, with the system clock: the
// home folder named, else $HOME, which must be a folder this process may read;
// the data folder named, else the platform's support folder, created when
// missing. The failure is a line for the user: "no home folder: …", "cannot
// read the home folder …", "cannot create the data folder …".
Result<EngineEnvironment> engineEnvironment(const FolderChoice& choice);

}  // namespace tallowen
