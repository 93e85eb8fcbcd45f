#include "store/JsonSettingsStore.hpp"
#include "base/Files.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::TempDir;

TEST(JsonSettingsStoreTest, KeepsBooleansAndDatesExactlyAcrossInstancesAndOtherKeysAsTheyWere) {
    TempDir dir;
    dir.write("settings.json", R"({"lastImportDate":true,"usageSamplePurge.v1":1,"x":{"a":[1,null]}})");
    JsonSettingsStore writer = JsonSettingsStore::inSupportFolder(dir.path());
    // A value of another type reads as absent.
    EXPECT_FALSE(writer.dateValue("lastImportDate") || writer.boolValue("usageSamplePurge.v1"));
    EXPECT_EQ(writer.dateValue("usageSamplePurge.v1"), Date{1});

    const Date when{760000000.123456789};
    writer.setBool("firstLaunchNoticeShown", true);
    writer.setDate("cloudSync.lastSuccessAt", when);
    const JsonSettingsStore reader(dir.path() / "settings.json");
    EXPECT_TRUE(reader.boolValue("firstLaunchNoticeShown"));
    EXPECT_EQ(reader.dateValue("cloudSync.lastSuccessAt"), when);
    writer.setDate("cloudSync.lastSuccessAt", Date{-5});
    EXPECT_EQ(reader.dateValue("cloudSync.lastSuccessAt"), Date{-5});
    EXPECT_EQ(readWholeFile(dir.path() / "settings.json"),
              R"({"cloudSync.lastSuccessAt":-5,"firstLaunchNoticeShown":true,"lastImportDate":true,)"
              R"("usageSamplePurge.v1":1,"x":{"a":[1,null]}})");
}

TEST(JsonSettingsStoreTest, ANumberNoCalendarCanShowIsNoDate) {
    TempDir dir;
    const JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path());
    const std::pair<const char*, bool> cases[] = {
        {"1e308", false},       {"-1e308", false},       {"1e300", false}, {"252423993600", false},
        {"252423993599", true}, {"-63113904000", true}, {"-63113904001", false}, {"0", true}};
    for (const auto& [number, usable] : cases) {
        dir.write("settings.json", std::string(R"({"lastImportDate":)") + number + "}");
        EXPECT_EQ(settings.dateValue("lastImportDate").has_value(), usable) << number;
    }
}

TEST(JsonSettingsStoreTest, AMissingOrCorruptFileReadsAsEmptyAndIsReplacedWholeAndAFailedWriteIsIgnored) {
    for (const char* contents : {"", "{\"lastImportDate\": 12", "[true]", "null"}) {
        SCOPED_TRACE(contents);
        TempDir dir;
        dir.write("settings.json", contents);
        JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path());
        EXPECT_FALSE(settings.dateValue("lastImportDate"));
        settings.setDate("lastImportDate", Date{42.5});
        EXPECT_EQ(readWholeFile(dir.path() / "settings.json"), R"({"lastImportDate":42.5})");
    }
    TempDir dir;
    dir.write("blocker", "a file where the folder should be");
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path() / "blocker");
    settings.setBool("usageSamplePurge.v1", true);
    EXPECT_FALSE(settings.boolValue("usageSamplePurge.v1"));
}

}  // namespace
}  // namespace tallowen
