#pragma once

#include "activity/ActivationStamps.hpp"
#include "model/DayUsage.hpp"
#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"

#include <filesystem>
#include <string_view>

namespace tallowen {

// The activations of the watched desktop chat applications, kept in
// "app-activations.json" beside the import state. The platform's observer of
// front-most applications calls `record`; the import run asks for `dayUsage`.
// File failures are silent: an unreadable file loads as no stamps, and a
// failed write keeps the new stamp in memory for the next write to carry.
class AppActivityRecorder {
public:
    static constexpr const char* fileName = "app-activations.json";

    explicit AppActivityRecorder(std::filesystem::path activationFile);

    // The activation file that lies in the same folder as the import state file.
    static std::filesystem::path locationBeside(const std::filesystem::path& importStateLocation);

    // Records an activation of a watched application (others are ignored) and
    // rewrites the file. Returns whether a stamp was recorded, that is whether
    // an import should be requested.
    bool record(std::string_view bundleId, Date now);

    // Per desktop tool, its days: every stamp is one request of zero tokens,
    // folded with the two-hour episode rule under the bundle identifier.
    ToolResults dayUsage(const LocalCalendar& calendar) const;

    const ActivationStamps& stamps() const { return stamps_; }
    const std::filesystem::path& location() const { return activationFile_; }

private:
    std::filesystem::path activationFile_;
    ActivationStamps stamps_;
};

}  // namespace tallowen
