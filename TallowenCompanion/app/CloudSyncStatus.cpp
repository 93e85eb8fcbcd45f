#include "app/CloudSyncStatus.hpp"

#include <algorithm>

namespace tallowen {

CloudSyncStatus::CloudSyncStatus(SettingsStore& settings)
    : settings_(settings), lastSuccessfulSync_(settings.dateValue(lastSuccessKey)) {}

CloudSyncWrites CloudSyncStatus::apply(const CloudSyncEvent& event) {
    CloudSyncWrites writes;
    if (event.type != CloudEventType::import && event.type != CloudEventType::exportEvent) return writes;

    if (!event.endDate) {
        ++pendingCount_;
        writes.pendingCount = true;
        if (!isSyncing_) {
            isSyncing_ = true;
            writes.isSyncing = true;
        }
        return writes;
    }

    // An end without a matching start (one begun before launch) must not
    // leave the count below zero.
    pendingCount_ = std::max<int64_t>(pendingCount_ - 1, 0);
    writes.pendingCount = true;
    const bool stillSyncing = pendingCount_ >= 1;
    if (stillSyncing != isSyncing_) {
        isSyncing_ = stillSyncing;
        writes.isSyncing = true;
    }
    writes.lastErrorDescription = true;
    if (!event.succeeded) {
        // A failure keeps the last success, so the stale warning still comes.
        lastErrorDescription_ = event.errorDescription;
        return writes;
    }
    lastErrorDescription_.reset();
    lastSuccessfulSync_ = *event.endDate;
    writes.lastSuccessfulSync = true;
    settings_.setDate(lastSuccessKey, *event.endDate);
    return writes;
}

CloudSyncWarning cloudSyncWarning(bool isSyncing, std::optional<Date> lastSuccessfulSync, Date now) {
    if (isSyncing) return CloudSyncWarning::syncing;
    if (!lastSuccessfulSync) return CloudSyncWarning::never;
    if (now.secondsSince(*lastSuccessfulSync) > cloudSyncStaleAfterSeconds) return CloudSyncWarning::stale;
    return CloudSyncWarning::fine;
}

CloudSyncWarning cloudSyncWarning(const CloudSyncStatus& status, Date now) {
    return cloudSyncWarning(status.isSyncing(), status.lastSuccessfulSync(), now);
}

}  // namespace tallowen
