#include "capi/CApiText.hpp"
#include "capi/Handles.hpp"

namespace {

tallowen::CloudEventType typeOf(tw_cloud_event_kind kind) {
    switch (kind) {
        case TW_CLOUD_EVENT_SETUP: return tallowen::CloudEventType::setup;
        case TW_CLOUD_EVENT_IMPORT: return tallowen::CloudEventType::import;
        case TW_CLOUD_EVENT_EXPORT: return tallowen::CloudEventType::exportEvent;
        case TW_CLOUD_EVENT_OTHER: break;
    }
    return tallowen::CloudEventType::other;
}

}  // namespace

extern "C" {

tw_sync_status* tw_sync_status_create(tw_settings* settings) {
    if (settings == nullptr) return nullptr;
    try {
        auto status = std::make_unique<tallowen::CloudSyncStatus>(*settings->store);
        return new tw_sync_status{settings->store, std::move(status)};
    } catch (...) {
        return nullptr;
    }
}

void tw_sync_status_free(tw_sync_status* status) { delete status; }

void tw_sync_status_apply(tw_sync_status* status, const tw_cloud_event* event) {
    if (status == nullptr || event == nullptr) return;
    try {
        tallowen::CloudSyncEvent applied;
        applied.type = typeOf(event->kind);
        if (event->has_end_date) applied.endDate = tallowen::Date{event->end_date};
        applied.succeeded = event->succeeded;
        if (event->error_description != nullptr) applied.errorDescription = std::string(event->error_description);
        status->status->apply(applied);
    } catch (...) {
        // Only an exhausted memory lands here; the event is lost like a missed notification.
    }
}

bool tw_sync_status_last_successful_sync(const tw_sync_status* status, double* date) {
    if (status == nullptr) return false;
    const auto last = status->status->lastSuccessfulSync();
    if (!last) return false;
    if (date != nullptr) *date = last->secondsSinceReferenceDate;
    return true;
}

char* tw_sync_status_last_error_description(const tw_sync_status* status) {
    if (status == nullptr || !status->status->lastErrorDescription()) return nullptr;
    return tallowen::capi::ownedText(*status->status->lastErrorDescription());
}

bool tw_sync_status_is_syncing(const tw_sync_status* status) {
    return status != nullptr && status->status->isSyncing();
}

int64_t tw_sync_status_pending_count(const tw_sync_status* status) {
    return status == nullptr ? 0 : status->status->pendingCount();
}

}  // extern "C"
