#pragma once

#include "model/SettingsStore.hpp"

#include <optional>
#include <string>

namespace tallowen {

inline constexpr const char* firstLaunchNoticeShownKey = "firstLaunchNoticeShown";
inline constexpr const char* loginItemRegisteredKey = "loginItemRegistered";

// The alert that tells a new user where the application went.
struct FirstLaunchNotice {
    // Shown this long after start-up, so that the menu-bar item is there first.
    double delaySeconds = 0.6;
    std::string messageText;
    std::string informativeText;
    std::string buttonTitle;
};

// True on the first launch only: the flag is set before the caller registers
// the login item, so a failed or crashed registration is not tried again.
bool claimLoginItemRegistration(SettingsStore& settings);

// The notice on the first launch only, its flag set before it is shown.
std::optional<FirstLaunchNotice> claimFirstLaunchNotice(SettingsStore& settings);

enum class CloudDatabaseChoice { privateDatabase, none };

// The store follows the user's private cloud database only when the running
// task can be inspected and carries the iCloud services entitlement; in any
// other case it stays on this machine.
CloudDatabaseChoice cloudDatabaseChoice(bool taskAvailable, bool hasCloudServicesEntitlement);

enum class LoginItemStatus { notRegistered, enabled, requiresApproval, notFound };

// The launch-at-login checkbox is ticked only for a registration the system
// has enabled; one still awaiting the user's approval reads as off.
bool loginItemEnabled(LoginItemStatus status);

}  // namespace tallowen
