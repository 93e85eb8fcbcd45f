#pragma once

#include "support/CursorDatabase.hpp"
#include "support/TempDir.hpp"

#include <filesystem>
#include <string>

namespace tallowen::testing {

// A home folder holding logs of the three tools over two days of March 2025
// (Paris time), written under `relative` in `scratch`. The JSONL logs are the
// ones in tests/data/usage-home, which the Swift tests read too.
inline void writeUsageHome(const TempDir& scratch, const std::filesystem::path& relative) {
    const auto home = scratch.path() / relative;
    std::filesystem::create_directories(home);
    std::filesystem::copy(TALLOWEN_SOURCE_DIR "/tests/data/usage-home", home, std::filesystem::copy_options::recursive);
    writeCursorDatabase(home / "Library/Application Support/Cursor/User/globalStorage/state.vscdb",
                        {{"composerData:" + std::string(36, 'd'), cursorCreatedAt(1741950000000)},
                         {"bubbleId:" + std::string(36, 'd') + ":1", cursorTokenCount(3000, 400)}});
}

}  // namespace tallowen::testing
