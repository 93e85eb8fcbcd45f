#include "app/StartupDecisions.hpp"
#include "model/MemorySettingsStore.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

// Records the order of the flag writes, to see each one made before its action.
class WatchedSettings : public MemorySettingsStore {
public:
    void setBool(const std::string& key, bool value) override {
        writes.push_back(key);
        MemorySettingsStore::setBool(key, value);
    }
    std::vector<std::string> writes;
};

TEST(StartupDecisionsTest, EachOnceOnlyActionIsClaimedOnceWithItsOwnFlagSetFirst) {
    WatchedSettings settings;
    EXPECT_TRUE(claimLoginItemRegistration(settings));
    EXPECT_EQ(settings.writes, std::vector<std::string>{"loginItemRegistered"});
    EXPECT_FALSE(claimLoginItemRegistration(settings));

    const auto notice = claimFirstLaunchNotice(settings);
    ASSERT_TRUE(notice);
    EXPECT_EQ(settings.writes.back(), "firstLaunchNoticeShown");
    EXPECT_DOUBLE_EQ(notice->delaySeconds, 0.6);
    EXPECT_EQ(notice->messageText + "|" + notice->buttonTitle, "Le compagnon est installé.|Compris");
    EXPECT_EQ(notice->informativeText,
              "Cherche son icône dans la barre de menu, en haut de l'écran. Il lit tes journaux en local et "
              "n'envoie que des nombres vers ton iCloud.");
    EXPECT_FALSE(claimFirstLaunchNotice(settings));
    EXPECT_EQ(settings.writes.size(), 2u);

    MemorySettingsStore noticeShown;
    noticeShown.setBool("firstLaunchNoticeShown", true);
    EXPECT_TRUE(claimLoginItemRegistration(noticeShown));
}

TEST(StartupDecisionsTest, CloudOnlyWithTheEntitlementAndLoginItemOnlyWhenEnabled) {
    EXPECT_EQ(cloudDatabaseChoice(true, true), CloudDatabaseChoice::privateDatabase);
    for (const auto& [entitled, enabled] : {std::pair{true, false}, {false, true}, {false, false}})
        EXPECT_EQ(cloudDatabaseChoice(entitled, enabled), CloudDatabaseChoice::none);
    EXPECT_TRUE(loginItemEnabled(LoginItemStatus::enabled));
    for (const auto status :
         {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval, LoginItemStatus::notFound})
        EXPECT_FALSE(loginItemEnabled(status));
}

}  // namespace
}  // namespace tallowen
