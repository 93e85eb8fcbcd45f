#include "capi/CApiText.hpp"
#include "capi/Handles.hpp"

#include "activity/WatchedApplications.hpp"
#include "base/JsonWriter.hpp"

extern "C" {

tw_activity* tw_activity_create(const char* support_folder) {
    if (support_folder == nullptr) return nullptr;
    try {
        const std::filesystem::path file =
            std::filesystem::path(support_folder) / tallowen::AppActivityRecorder::fileName;
        return new tw_activity{std::make_shared<tallowen::AppActivityRecorder>(file)};
    } catch (...) {
        return nullptr;
    }
}

void tw_activity_free(tw_activity* activity) { delete activity; }

bool tw_activity_record(tw_activity* activity, const char* bundle_identifier, double now) {
    if (activity == nullptr || bundle_identifier == nullptr) return false;
    try {
        return activity->recorder->record(bundle_identifier, tallowen::Date{now});
    } catch (...) {
        return false;
    }
}

char* tw_activity_watched_bundle_identifiers(void) {
    try {
        tallowen::JsonWriter out;
        out.beginArray();
        for (const auto& application : tallowen::watchedApplications) out.string(application.bundleId);
        out.endArray();
        return tallowen::capi::ownedText(out.text());
    } catch (...) {
        return nullptr;
    }
}

}  // extern "C"
