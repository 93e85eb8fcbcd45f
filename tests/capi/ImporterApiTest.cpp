#include "capi/CallbackTables.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

namespace tallowen::testing {
namespace {

constexpr auto npos = std::string::npos;

TEST(ImporterApiTest, AnAbandonedPurgeIsDueAgainAndTheNextRunReportsItsProgressAndWhatItRemoved) {
    TempDir scratch;
    writeUsageHome(scratch, "home");
    MemorySettingsStore settingsValues;
    SqliteOpener opener{scratch.path() / "support" / SqliteSampleStore::fileName};
    tw_settings* settings = tw_settings_create(memorySettingsTable(&settingsValues));
    tw_activity* activity = tw_activity_create((scratch.path() / "support").c_str());
    tw_importer* importer = tw_importer_create((scratch.path() / "home").c_str(), (scratch.path() / "support").c_str(),
                                               settings, opener.table(), activity);
    // The importer keeps what it needs: the caller's handles may go first.
    tw_settings_free(settings);
    tw_activity_free(activity);
    ASSERT_NE(importer, nullptr);
    const auto state = [importer] { return takeText(tw_importer_state(importer)); };
    EXPECT_EQ(state(),
              R"({"isImporting":false,"lastImport":null,"lastError":null,"detectedTools":[],"todaySessions":0,)"
              R"("todayTokens":0,"todayCostCents":0,"purgeProgress":null})");
    tw_file_work* work = tw_importer_begin(importer);
    ASSERT_NE(work, nullptr);
    tw_file_work_run(work);
    tw_purge* purge = tw_importer_files_read(importer, work);
    ASSERT_NE(purge, nullptr);
    EXPECT_NE(state().find(R"("purgeProgress":0})"), npos);
    tw_purge_free(purge);
    takeText(tw_importer_finish(importer, nullptr));
    EXPECT_NE(state().find(R"("purgeProgress":null})"), npos);
    EXPECT_FALSE(settingsValues.boolValue("usageSamplePurge.v1"));

    {
        SqliteSampleStore store(opener.path);
        for (int copy = 0; copy < 3; ++copy) store.insert(slotSample("2025-03-14", "codex", Date{100.0 + copy}));
        store.save();
    }
    work = tw_importer_begin(importer);
    tw_file_work_run(work);
    purge = tw_importer_files_read(importer, work);
    ASSERT_NE(purge, nullptr);
    std::vector<double> progress;
    tw_purge_run(purge, [](void* c, double f) { static_cast<std::vector<double>*>(c)->push_back(f); }, &progress);
    const std::string report = takeText(tw_importer_finish(importer, purge));
    EXPECT_NE(report.find(R"("duplicatesRemoved":3,)"), npos) << report;
    EXPECT_EQ(progress.back(), 1.0);
    tw_importer_free(importer);
    EXPECT_EQ(opener.released, 1);
}

}  // namespace
}  // namespace tallowen::testing
