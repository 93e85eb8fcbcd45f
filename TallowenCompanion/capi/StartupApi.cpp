#include "capi/CApiText.hpp"
#include "capi/Handles.hpp"

#include "app/StartupDecisions.hpp"
#include "base/JsonWriter.hpp"

extern "C" {

bool tw_claim_login_item_registration(tw_settings* settings) {
    if (settings == nullptr) return false;
    try {
        return tallowen::claimLoginItemRegistration(*settings->store);
    } catch (...) {
        return false;
    }
}

char* tw_claim_first_launch_notice(tw_settings* settings) {
    if (settings == nullptr) return nullptr;
    try {
        const auto notice = tallowen::claimFirstLaunchNotice(*settings->store);
        if (!notice) return nullptr;
        tallowen::JsonWriter out;
        out.beginObject();
        out.key("delaySeconds").number(notice->delaySeconds);
        out.key("messageText").string(notice->messageText);
        out.key("informativeText").string(notice->informativeText);
        out.key("buttonTitle").string(notice->buttonTitle);
        out.endObject();
        return tallowen::capi::ownedText(out.text());
    } catch (...) {
        return nullptr;
    }
}

bool tw_uses_cloud_database(bool task_available, bool has_cloud_services_entitlement) {
    return tallowen::cloudDatabaseChoice(task_available, has_cloud_services_entitlement) ==
           tallowen::CloudDatabaseChoice::privateDatabase;
}

bool tw_login_item_enabled(tw_login_item_status status) {
    switch (status) {
        case TW_LOGIN_ITEM_ENABLED: return tallowen::loginItemEnabled(tallowen::LoginItemStatus::enabled);
        case TW_LOGIN_ITEM_REQUIRES_APPROVAL:
            return tallowen::loginItemEnabled(tallowen::LoginItemStatus::requiresApproval);
        case TW_LOGIN_ITEM_NOT_FOUND: return tallowen::loginItemEnabled(tallowen::LoginItemStatus::notFound);
        case TW_LOGIN_ITEM_NOT_REGISTERED: break;
    }
    return tallowen::loginItemEnabled(tallowen::LoginItemStatus::notRegistered);
}

}  // extern "C"
