#include "store/JsonSettingsStore.hpp"
#include "base/Files.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::TempDir;

TEST(JsonSettingsStoreTest, KeepsBooleansAndDatesExactlyAcrossInstances) {
    TempDir dir;
    JsonSettingsStore writer = JsonSettingsStore::inSupportFolder(dir.path());
    EXPECT_FALSE(writer.boolValue("usageSamplePurge.v1"));
    EXPECT_FALSE(writer.dateValue("lastImportDate"));

    const Date when{760000000.123456789};
    writer.setBool("usageSamplePurge.v1", true);
    writer.setDate("lastImportDate", when);
    writer.setDate("cloudSync.lastSuccessAt", Date{-5});

    const JsonSettingsStore reader(dir.path() / "settings.json");
    EXPECT_TRUE(reader.boolValue("usageSamplePurge.v1"));
    ASSERT_TRUE(reader.dateValue("lastImportDate"));
    EXPECT_EQ(reader.dateValue("lastImportDate")->secondsSinceReferenceDate, when.secondsSinceReferenceDate);
    EXPECT_EQ(reader.dateValue("cloudSync.lastSuccessAt"), Date{-5});

    writer.setBool("usageSamplePurge.v1", false);
    EXPECT_FALSE(reader.boolValue("usageSamplePurge.v1"));
}

TEST(JsonSettingsStoreTest, AValueOfAnotherTypeReadsAsAbsentAndSurvivesOtherWrites) {
    TempDir dir;
    dir.write("settings.json",
              R"({"lastImportDate":true,"usageSamplePurge.v1":1,"loginItemRegistered":"yes","x":{"a":[1,null]}})");
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path());
    EXPECT_FALSE(settings.dateValue("lastImportDate"));
    EXPECT_FALSE(settings.boolValue("usageSamplePurge.v1"));
    EXPECT_FALSE(settings.boolValue("loginItemRegistered"));
    EXPECT_EQ(settings.dateValue("usageSamplePurge.v1"), Date{1});

    settings.setBool("firstLaunchNoticeShown", true);
    EXPECT_EQ(readWholeFile(dir.path() / "settings.json"),
              R"({"firstLaunchNoticeShown":true,"lastImportDate":true,"loginItemRegistered":"yes",)"
              R"("usageSamplePurge.v1":1,"x":{"a":[1,null]}})");
}

TEST(JsonSettingsStoreTest, ANumberNoCalendarCanShowIsNoDate) {
    TempDir dir;
    const JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path());
    const struct {
        const char* number;
        bool usable;
    } cases[] = {{"1e308", false}, {"-1e308", false}, {"1e300", false}, {"252423993600", false},
                 {"252423993599", true}, {"-63113904000", true}, {"-63113904001", false}, {"0", true}};
    for (const auto& c : cases) {
        dir.write("settings.json", std::string(R"({"lastImportDate":)") + c.number + "}");
        EXPECT_EQ(settings.dateValue("lastImportDate").has_value(), c.usable) << c.number;
    }
}

TEST(JsonSettingsStoreTest, AMissingOrCorruptFileReadsAsEmptyAndIsReplacedWhole) {
    for (const char* contents : {"", "{\"lastImportDate\": 12", "[true]", "null"}) {
        SCOPED_TRACE(contents);
        TempDir dir;
        dir.write("settings.json", contents);
        JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path());
        EXPECT_FALSE(settings.dateValue("lastImportDate"));
        settings.setDate("lastImportDate", Date{42.5});
        EXPECT_EQ(readWholeFile(dir.path() / "settings.json"), R"({"lastImportDate":42.5})");
    }
}

TEST(JsonSettingsStoreTest, AFailedWriteIsIgnored) {
    TempDir dir;
    dir.write("blocker", "a file where the folder should be");
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(dir.path() / "blocker");
    settings.setBool("usageSamplePurge.v1", true);
    EXPECT_FALSE(settings.boolValue("usageSamplePurge.v1"));
}

}  // namespace
}  // namespace tallowen
