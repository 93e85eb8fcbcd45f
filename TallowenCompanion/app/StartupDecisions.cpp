#include "app/StartupDecisions.hpp"

namespace tallowen {
namespace {

bool claimOnce(SettingsStore& settings, const char* key) {
    if (settings.boolValue(key)) return false;
    settings.setBool(key, true);
    return true;
}

}  // namespace

bool claimLoginItemRegistration(SettingsStore& settings) { return claimOnce(settings, loginItemRegisteredKey); }

std::optional<FirstLaunchNotice> claimFirstLaunchNotice(SettingsStore& settings) {
    if (!claimOnce(settings, firstLaunchNoticeShownKey)) return std::nullopt;
    FirstLaunchNotice notice;
    notice.messageText = "Le compagnon est installé.";
    notice.informativeText =
        "Cherche son icône dans la barre de menu, en haut de l'écran. Il lit tes journaux en local et n'envoie que "
        "des nombres vers ton iCloud.";
    notice.buttonTitle = "Compris";
    return notice;
}

CloudDatabaseChoice cloudDatabaseChoice(bool taskAvailable, bool hasCloudServicesEntitlement) {
    return taskAvailable && hasCloudServicesEntitlement ? CloudDatabaseChoice::privateDatabase
                                                        : CloudDatabaseChoice::none;
}

bool loginItemEnabled(LoginItemStatus status) { return status == LoginItemStatus::enabled; }

}  // namespace tallowen
