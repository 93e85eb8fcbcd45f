#pragma once

#include "model/SettingsStore.hpp"
#include "model/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tallowen {

// The kinds of cloud-mirroring event the platform's store reports. Only
// imports and exports say anything about synchronisation.
enum class CloudEventType { setup, import, exportEvent, other };

// One cloud-mirroring event: started while it has no end date, finished once
// it has one.
struct CloudSyncEvent {
    CloudEventType type = CloudEventType::other;
    std::optional<Date> endDate;
    bool succeeded = false;
    // The localised description of the event's error, when it carries one.
    std::optional<std::string> errorDescription;
};

// Which observable values an event wrote, so that the shell republishes only
// those; a value written with the same content still counts as written.
struct CloudSyncWrites {
    bool pendingCount = false;
    bool isSyncing = false;
    bool lastErrorDescription = false;
    bool lastSuccessfulSync = false;

    friend bool operator==(const CloudSyncWrites&, const CloudSyncWrites&) = default;
};

// Whether the store's cloud mirroring works, followed from its events. The
// time of the last success outlives the process in the settings; the count
// of running events and the last error do not.
class CloudSyncStatus {
public:
    static constexpr const char* lastSuccessKey = "cloudSync.lastSuccessAt";

    explicit CloudSyncStatus(SettingsStore& settings);

    CloudSyncWrites apply(const CloudSyncEvent& event);

    std::optional<Date> lastSuccessfulSync() const { return lastSuccessfulSync_; }
    const std::optional<std::string>& lastErrorDescription() const { return lastErrorDescription_; }
    bool isSyncing() const { return isSyncing_; }
    int64_t pendingCount() const { return pendingCount_; }

private:
    SettingsStore& settings_;
    std::optional<Date> lastSuccessfulSync_;
    std::optional<std::string> lastErrorDescription_;
    bool isSyncing_ = false;
    int64_t pendingCount_ = 0;
};

// What the menu warns about: a synchronisation under way, none ever
// succeeded on this machine, or the last success more than three hours ago.
enum class CloudSyncWarning { syncing, never, stale, fine };

inline constexpr double cloudSyncStaleAfterSeconds = 10800.0;  // 3 hours

CloudSyncWarning cloudSyncWarning(bool isSyncing, std::optional<Date> lastSuccessfulSync, Date now);
CloudSyncWarning cloudSyncWarning(const CloudSyncStatus& status, Date now);

}  // namespace tallowen
