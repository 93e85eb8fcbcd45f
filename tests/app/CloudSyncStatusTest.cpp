#include "app/CloudSyncStatus.hpp"
#include "model/MemorySettingsStore.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using Type = CloudEventType;

CloudSyncEvent started(Type type = Type::exportEvent) { return {type, std::nullopt, false, {}}; }
CloudSyncEvent ended(double end, bool succeeded, std::optional<std::string> error = {}, Type type = Type::import) {
    return {type, Date{end}, succeeded, std::move(error)};
}

TEST(CloudSyncStatusTest, CountsRunningEventsAndWritesOnlyWhatChanged) {
    MemorySettingsStore settings;
    CloudSyncStatus status(settings);
    // {pendingCount, isSyncing, lastErrorDescription, lastSuccessfulSync}; an end without a start stays at zero.
    EXPECT_EQ(status.apply(ended(10, false)), (CloudSyncWrites{true, false, true, false}));
    EXPECT_EQ(status.pendingCount(), 0);
    EXPECT_EQ(status.apply(started(Type::import)), (CloudSyncWrites{true, true, false, false}));
    EXPECT_EQ(status.apply(started()), (CloudSyncWrites{true, false, false, false}));
    EXPECT_EQ(status.apply(ended(20, true)), (CloudSyncWrites{true, false, true, true}));
    EXPECT_EQ(status.apply(ended(30, true, {}, Type::exportEvent)), (CloudSyncWrites{true, true, true, true}));
    EXPECT_FALSE(status.isSyncing());
    for (const Type type : {Type::setup, Type::other}) {
        EXPECT_EQ(status.apply(started(type)), CloudSyncWrites{});
        EXPECT_EQ(status.apply(ended(60, false, "boom", type)), CloudSyncWrites{});
    }
    EXPECT_EQ(settings.dateValue(CloudSyncStatus::lastSuccessKey), Date{30});
}

TEST(CloudSyncStatusTest, AFailureRecordsOnlyItsTextAndASuccessClearsIt) {
    MemorySettingsStore settings;
    CloudSyncStatus status(settings);
    status.apply(ended(100, true));
    status.apply(ended(200, false, "Réseau indisponible"));
    EXPECT_EQ(status.lastErrorDescription(), "Réseau indisponible");
    EXPECT_EQ(status.lastSuccessfulSync(), Date{100});
    status.apply(ended(250, false));
    EXPECT_FALSE(status.lastErrorDescription());
    status.apply(ended(260, false, "après"));
    status.apply(ended(300, true));
    EXPECT_FALSE(status.lastErrorDescription());
}

}  // namespace
}  // namespace tallowen
