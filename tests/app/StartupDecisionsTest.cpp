#include "app/StartupDecisions.hpp"
#include "model/MemorySettingsStore.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

// Records whether a flag was already set when the caller's action would run.
class WatchedSettings : public MemorySettingsStore {
public:
    void setBool(const std::string& key, bool value) override {
        writes.push_back(key);
        MemorySettingsStore::setBool(key, value);
    }
    std::vector<std::string> writes;
};

TEST(StartupDecisionsTest, EachOnceOnlyActionIsClaimedOnceWithItsFlagSetFirst) {
    WatchedSettings settings;
    EXPECT_TRUE(claimLoginItemRegistration(settings));
    EXPECT_EQ(settings.writes, std::vector<std::string>{"loginItemRegistered"});
    EXPECT_TRUE(settings.boolValue("loginItemRegistered"));
    EXPECT_FALSE(claimLoginItemRegistration(settings));

    const auto notice = claimFirstLaunchNotice(settings);
    ASSERT_TRUE(notice);
    EXPECT_TRUE(settings.boolValue("firstLaunchNoticeShown"));
    EXPECT_DOUBLE_EQ(notice->delaySeconds, 0.6);
    EXPECT_EQ(notice->messageText, "Le compagnon est installé.");
    EXPECT_EQ(notice->informativeText,
              "Cherche son icône dans la barre de menu, en haut de l'écran. Il lit tes journaux en local et "
              "n'envoie que des nombres vers ton iCloud.");
    EXPECT_EQ(notice->buttonTitle, "Compris");
    EXPECT_FALSE(claimFirstLaunchNotice(settings));
    EXPECT_EQ(settings.writes.size(), 2u);
}

TEST(StartupDecisionsTest, TheFlagsAreIndependent) {
    MemorySettingsStore settings;
    settings.setBool("firstLaunchNoticeShown", true);
    EXPECT_FALSE(claimFirstLaunchNotice(settings));
    EXPECT_TRUE(claimLoginItemRegistration(settings));
}

TEST(StartupDecisionsTest, CloudOnlyWithTheEntitlementAndLoginItemOnlyWhenEnabled) {
    EXPECT_EQ(cloudDatabaseChoice(true, true), CloudDatabaseChoice::privateDatabase);
    EXPECT_EQ(cloudDatabaseChoice(true, false), CloudDatabaseChoice::none);
    EXPECT_EQ(cloudDatabaseChoice(false, true), CloudDatabaseChoice::none);
    EXPECT_EQ(cloudDatabaseChoice(false, false), CloudDatabaseChoice::none);

    EXPECT_TRUE(loginItemEnabled(LoginItemStatus::enabled));
    for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval,
                              LoginItemStatus::notFound})
        EXPECT_FALSE(loginItemEnabled(status));
}

}  // namespace
}  // namespace tallowen
