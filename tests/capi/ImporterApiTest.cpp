#include "capi/CallbackTables.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace tallowen::testing {
namespace {

struct FreeText {
    void operator()(char* text) const { tw_string_free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

class ImporterApiTest : public ::testing::Test {
protected:
    TempDir scratch;
    MemorySettingsStore settingsValues;
    SqliteOpener opener{scratch.path() / "support" / SqliteSampleStore::fileName};
    tw_settings* settings = tw_settings_create(memorySettingsTable(&settingsValues));
    tw_activity* activity = tw_activity_create((scratch.path() / "support").c_str());
    tw_importer* importer = nullptr;

    void SetUp() override {
        writeUsageHome(scratch, "home");
        importer = tw_importer_create((scratch.path() / "home").c_str(), (scratch.path() / "support").c_str(),
                                      settings, opener.table(), activity);
        // The importer keeps what it needs: the caller's handles may go first.
        tw_settings_free(settings);
        tw_activity_free(activity);
    }
    void TearDown() override {
        tw_importer_free(importer);
        EXPECT_EQ(opener.released, 1);
    }

    std::string state() const { return OwnedText(tw_importer_state(importer)).get(); }

    // One run as the Swift core drives it: file work and purge on threads of their own.
    std::string runOnThreads(std::vector<double>* progress = nullptr) {
        tw_file_work* work = tw_importer_begin(importer);
        if (work == nullptr) return "dropped";
        std::thread([work] { tw_file_work_run(work); }).join();
        tw_purge* purge = tw_importer_files_read(importer, work);
        if (purge != nullptr) {
            std::vector<double> fractions;
            std::thread([&] {
                tw_purge_run(purge, [](void* c, double f) { static_cast<std::vector<double>*>(c)->push_back(f); },
                             &fractions);
            }).join();
            for (const double fraction : fractions) tw_importer_purge_progressed(importer, fraction);
            if (progress) *progress = fractions;
        }
        return OwnedText(tw_importer_finish(importer, purge)).get();
    }

    std::vector<UsageSample> stored() const { return SqliteSampleStore(opener.path).fetchAll(); }
};

TEST_F(ImporterApiTest, ARunInStepsPurgesAndWritesThroughTheCallbacksAndASecondOneTouchesNothing) {
    ASSERT_NE(importer, nullptr);
    EXPECT_EQ(state(),
              R"({"isImporting":false,"lastImport":null,"lastError":null,"detectedTools":[],"todaySessions":0,)"
              R"("todayTokens":0,"todayCostCents":0,"purgeProgress":null})");
    std::filesystem::create_directories(opener.path.parent_path());
    {
        SqliteSampleStore store(opener.path);
        for (int copy = 0; copy < 8; ++copy) store.insert(slotSample("2025-03-14", "codex", Date{100.0 + copy}, copy));
        for (int copy = 0; copy < 2; ++copy) store.insert(slotSample("2025-02-01", "phone-claude", Date{50.0 + copy}));
        store.save();
    }
    // The purge takes the run's seven extra codex records, the writer the phone's extra one.
    std::vector<double> progress;
    const std::string first = runOnThreads(&progress);
    EXPECT_NE(first.find(R"("samplesInserted":4,"samplesUpdated":1,"samplesUnchanged":0,)"
                         R"("duplicatesRemoved":8,"filesRead":4,"filesReused":0,)"),
              std::string::npos)
        << first;
    EXPECT_EQ(progress.back(), 1.0);
    EXPECT_NE(state().find(R"("detectedTools":["claude-code","codex","cursor"])"), std::string::npos) << state();
    EXPECT_EQ(stored().size(), 5u + 1u);  // the run's five slots and the phone's one
    EXPECT_TRUE(settingsValues.boolValue("usageSamplePurge.v1"));
    EXPECT_TRUE(settingsValues.dateValue("lastImportDate"));

    const std::string second = runOnThreads();
    EXPECT_NE(second.find(R"("samplesInserted":0,"samplesUpdated":0,"samplesUnchanged":5,)"
                          R"("duplicatesRemoved":0,"filesRead":0,"filesReused":4,)"),
              std::string::npos)
        << second;
    EXPECT_NE(second.find(R"("lastError":null})"), std::string::npos) << second;
}

TEST_F(ImporterApiTest, ARequestDuringARunIsDroppedAndAnAbandonedPurgeIsDueAgain) {
    tw_file_work* work = tw_importer_begin(importer);
    ASSERT_NE(work, nullptr);
    EXPECT_NE(state().find(R"("isImporting":true)"), std::string::npos);
    EXPECT_EQ(tw_importer_begin(importer), nullptr);
    tw_file_work_run(work);
    tw_purge* purge = tw_importer_files_read(importer, work);
    ASSERT_NE(purge, nullptr);
    EXPECT_NE(state().find(R"("purgeProgress":0)"), std::string::npos);
    tw_purge_free(purge);
    OwnedText(tw_importer_finish(importer, nullptr));
    EXPECT_NE(state().find(R"("isImporting":false)"), std::string::npos);
    EXPECT_NE(state().find(R"("purgeProgress":null)"), std::string::npos);
    EXPECT_FALSE(settingsValues.boolValue("usageSamplePurge.v1"));
}

TEST_F(ImporterApiTest, AStoreThatCannotOpenIsReportedWithItsDescription) {
    std::filesystem::create_directories(opener.path);  // a folder where the file should be
    const std::string report = runOnThreads();
    EXPECT_NE(report.find(R"("lastError":"Store illisible : unable to open database file")"), std::string::npos)
        << report;
    EXPECT_FALSE(settingsValues.boolValue("usageSamplePurge.v1"));
}

}  // namespace
}  // namespace tallowen::testing
