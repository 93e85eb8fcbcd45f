#include "activity/AppActivityRecorder.hpp"

#include "activity/WatchedApplications.hpp"
#include "base/Files.hpp"
#include "model/DaysFromEvents.hpp"

namespace tallowen {

AppActivityRecorder::AppActivityRecorder(std::filesystem::path activationFile)
    : activationFile_(std::move(activationFile)) {
    if (const auto text = readWholeFile(activationFile_))
        stamps_ = decodeActivationStamps(*text).value_or(ActivationStamps{});
}

std::filesystem::path AppActivityRecorder::locationBeside(const std::filesystem::path& importStateLocation) {
    return importStateLocation.parent_path() / fileName;
}

bool AppActivityRecorder::record(std::string_view bundleId, Date now) {
    if (!watchedTool(bundleId)) return false;
    if (!addActivationStamp(stamps_, std::string(bundleId), now)) return false;
    writeFileAtomically(activationFile_, encodeActivationStamps(stamps_));
    return true;
}

ToolResults AppActivityRecorder::dayUsage(const LocalCalendar& calendar) const {
    ToolResults results;
    for (const auto& application : watchedApplications) {
        const auto found = stamps_.find(std::string(application.bundleId));
        if (found == stamps_.end() || found->second.empty()) continue;
        std::vector<UsageEvent> events;
        events.reserve(found->second.size());
        for (const Date stamp : found->second) events.push_back(UsageEvent{stamp, 0, 0, 0, 0});
        results[application.tool] = daysFromEvents(std::move(events), application.bundleId, calendar);
    }
    return results;
}

}  // namespace tallowen
