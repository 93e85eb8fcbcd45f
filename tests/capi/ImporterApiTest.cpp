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
constexpr auto npos = std::string::npos;

TEST(ImporterApiTest, AnAbandonedPurgeIsDueAgainAndTheNextRunPurgesOnAThreadOfItsOwn) {
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
    const auto state = [importer] { return std::string(OwnedText(tw_importer_state(importer)).get()); };
    EXPECT_EQ(state(),
              R"({"isImporting":false,"lastImport":null,"lastError":null,"detectedTools":[],"todaySessions":0,)"
              R"("todayTokens":0,"todayCostCents":0,"purgeProgress":null})");
    tw_file_work* work = tw_importer_begin(importer);
    ASSERT_NE(work, nullptr);
    EXPECT_EQ(tw_importer_begin(importer), nullptr);
    tw_file_work_run(work);
    tw_purge* purge = tw_importer_files_read(importer, work);
    ASSERT_NE(purge, nullptr);
    EXPECT_NE(state().find(R"("isImporting":true,)"), npos);
    EXPECT_NE(state().find(R"("purgeProgress":0})"), npos);
    tw_purge_free(purge);
    OwnedText(tw_importer_finish(importer, nullptr));
    EXPECT_NE(state().find(R"("isImporting":false)"), npos);
    EXPECT_NE(state().find(R"("purgeProgress":null})"), npos);
    EXPECT_FALSE(settingsValues.boolValue("usageSamplePurge.v1"));

    {
        SqliteSampleStore store(opener.path);
        for (int copy = 0; copy < 3; ++copy) store.insert(slotSample("2025-03-14", "codex", Date{100.0 + copy}));
        store.save();
    }
    // As the Swift core drives a run: file work and purge on threads of their own.
    work = tw_importer_begin(importer);
    std::thread([work] { tw_file_work_run(work); }).join();
    purge = tw_importer_files_read(importer, work);
    ASSERT_NE(purge, nullptr);
    std::vector<double> progress;
    std::thread([&] {
        tw_purge_run(purge, [](void* c, double f) { static_cast<std::vector<double>*>(c)->push_back(f); }, &progress);
    }).join();
    for (const double fraction : progress) tw_importer_purge_progressed(importer, fraction);
    const std::string report = OwnedText(tw_importer_finish(importer, purge)).get();
    EXPECT_NE(report.find(R"("duplicatesRemoved":3,)"), npos) << report;
    EXPECT_EQ(progress.back(), 1.0);
    EXPECT_NE(state().find(R"("detectedTools":["claude-code","codex","cursor"])"), npos) << state();
    EXPECT_TRUE(settingsValues.boolValue("usageSamplePurge.v1"));
    EXPECT_TRUE(settingsValues.dateValue("lastImportDate"));
    tw_importer_free(importer);
    EXPECT_EQ(opener.released, 1);
}

}  // namespace
}  // namespace tallowen::testing
