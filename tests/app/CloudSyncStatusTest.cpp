#include "app/CloudSyncStatus.hpp"
#include "model/MemorySettingsStore.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

CloudSyncEvent started(CloudEventType type = CloudEventType::exportEvent) { return {type, std::nullopt, false, {}}; }

CloudSyncEvent ended(double end, bool succeeded, std::optional<std::string> error = {},
                     CloudEventType type = CloudEventType::import) {
    return {type, Date{end}, succeeded, std::move(error)};
}

TEST(CloudSyncStatusTest, CountsRunningEventsAndWritesSyncingOnlyOnChange) {
    MemorySettingsStore settings;
    CloudSyncStatus status(settings);
    // An end without a start leaves the count at zero.
    EXPECT_EQ(status.apply(ended(10, false)), (CloudSyncWrites{true, false, true, false}));
    EXPECT_EQ(status.pendingCount(), 0);

    EXPECT_EQ(status.apply(started(CloudEventType::import)), (CloudSyncWrites{true, true, false, false}));
    EXPECT_EQ(status.apply(started()), (CloudSyncWrites{true, false, false, false}));
    EXPECT_EQ(status.apply(ended(20, true)), (CloudSyncWrites{true, false, true, true}));
    EXPECT_TRUE(status.isSyncing());
    EXPECT_EQ(status.apply(ended(30, true, {}, CloudEventType::exportEvent)), (CloudSyncWrites{true, true, true, true}));
    EXPECT_FALSE(status.isSyncing());

    // Set-up and other events, started or ended, change nothing.
    for (const CloudEventType type : {CloudEventType::setup, CloudEventType::other}) {
        EXPECT_EQ(status.apply(started(type)), CloudSyncWrites{});
        EXPECT_EQ(status.apply(ended(50, true, {}, type)), CloudSyncWrites{});
        EXPECT_EQ(status.apply(ended(60, false, "boom", type)), CloudSyncWrites{});
    }
    EXPECT_EQ(status.lastSuccessfulSync(), Date{30});
    EXPECT_FALSE(status.lastErrorDescription());
}

TEST(CloudSyncStatusTest, SuccessOutlivesARestartAndAFailureOnlyRecordsItsText) {
    MemorySettingsStore settings;
    {
        CloudSyncStatus status(settings);
        status.apply(ended(100, true));
        status.apply(ended(200, false, "Réseau indisponible"));
        EXPECT_EQ(status.lastErrorDescription(), "Réseau indisponible");
        EXPECT_EQ(status.lastSuccessfulSync(), Date{100});
        status.apply(ended(250, false));
        EXPECT_FALSE(status.lastErrorDescription());
        status.apply(ended(300, true));
        status.apply(ended(400, false, "après"));
        status.apply(started());
    }
    const CloudSyncStatus restarted(settings);
    EXPECT_EQ(restarted.lastSuccessfulSync(), Date{300});
    EXPECT_FALSE(restarted.lastErrorDescription() || restarted.isSyncing());
}

TEST(CloudSyncStatusTest, WarningSyncingThenNeverThenStaleAfterThreeHours) {
    const Date now{50000};
    const struct {
        bool isSyncing;
        std::optional<Date> lastSuccess;
        CloudSyncWarning warning;
    } cases[] = {
        {true, std::nullopt, CloudSyncWarning::syncing},         {true, Date{0}, CloudSyncWarning::syncing},
        {false, std::nullopt, CloudSyncWarning::never},          {false, Date{50000 - 10801}, CloudSyncWarning::stale},
        {false, Date{50000 - 10800}, CloudSyncWarning::fine},    {false, Date{50060}, CloudSyncWarning::fine},
    };
    for (const auto& c : cases) EXPECT_EQ(cloudSyncWarning(c.isSyncing, c.lastSuccess, now), c.warning);
}

}  // namespace
}  // namespace tallowen
