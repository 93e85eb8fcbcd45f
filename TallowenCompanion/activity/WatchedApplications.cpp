#include "activity/WatchedApplications.hpp"

namespace tallowen {

std::optional<UsageTool> watchedTool(std::string_view bundleId) {
    for (const auto& application : watchedApplications)
        if (application.bundleId == bundleId) return application.tool;
    return std::nullopt;
}

}  // namespace tallowen
