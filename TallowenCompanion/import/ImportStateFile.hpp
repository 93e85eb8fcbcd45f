#pragma once

#include "import/ImportState.hpp"

#include <filesystem>

namespace tallowen {

// "import-state.json" in the support folder. Failures are silent: an unreadable,
// undecodable or old file loads as a new state, and a failed save is ignored
// (the next run reads the files again).
class ImportStateFile {
public:
    explicit ImportStateFile(std::filesystem::path supportFolder);

    // The file's location; the folder is created (with its parents) on the way.
    std::filesystem::path location() const;
    ImportState load() const;
    bool save(const ImportState& state) const;

private:
    std::filesystem::path supportFolder_;
};

}  // namespace tallowen
