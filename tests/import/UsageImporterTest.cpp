#include "import/UsageImporter.hpp"

#include "store/JsonSettingsStore.hpp"
#include "model/MemorySettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/Dates.hpp"
#include "support/Samples.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <future>
#include <thread>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::TempDir;
using Outcome = ImportRunReport::Outcome;

// Two replies of Claude Code on 14 March 2025, at 10:15 and 14:00 in Paris.
const std::string claudeLog =
    R"({"type":"assistant","timestamp":"2025-03-14T09:15:02.500Z","message":{"model":"claude-sonnet-4-5",)"
    R"("usage":{"input_tokens":1000,"cache_creation_input_tokens":2000,"output_tokens":5000}}})"
    "\n"
    R"({"type":"assistant","timestamp":"2025-03-14T13:00:00Z","message":{"model":"claude-sonnet-4-5",)"
    R"("usage":{"input_tokens":100,"output_tokens":1000}}})"
    "\n";

class UsageImporterTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone{"Europe/Paris"};
    TempDir scratch;
    Date now = localDate(2025, 3, 14, 18, 0);

    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path support() const { return scratch.path() / "support"; }
    std::filesystem::path storeFile() const { return support() / SqliteSampleStore::fileName; }

    EngineEnvironment environment() const {
        EngineEnvironment environment;
        environment.homeFolder = home();
        environment.supportFolder = support();
        environment.clock = [this] { return now; };
        return environment;
    }

    void writeLogs() const {
        scratch.write("home/.claude/projects/-home-dev-proj/session-a.jsonl", claudeLog);
        // Codex is installed but has no session yet: detected, without a sample.
        std::filesystem::create_directories(home() / ".codex" / "sessions");
    }

    SampleStoreOpener storeOpener() const {
        return [file = storeFile()] { return std::make_unique<SqliteSampleStore>(file); };
    }

    std::vector<UsageSample> storedSamples() const {
        auto samples = SqliteSampleStore(storeFile()).fetchAll();
        std::sort(samples.begin(), samples.end(), [](const UsageSample& a, const UsageSample& b) {
            return std::tie(a.dayKey, a.tool, a.persistentId) < std::tie(b.dayKey, b.tool, b.persistentId);
        });
        return samples;
    }

    void storeSamples(const std::vector<UsageSample>& samples) const {
        std::filesystem::create_directories(support());
        SqliteSampleStore store(storeFile());
        for (const UsageSample& sample : samples) store.insert(sample);
        store.save();
    }
};

// Everything an observer saw, in order.
struct Observed {
    std::vector<ImporterProperty> properties;
    std::vector<std::optional<double>> purgeProgress;

    void attach(UsageImporter& importer) {
        importer.setObserver([this, &importer](ImporterProperty property) {
            properties.push_back(property);
            if (property == ImporterProperty::purgeProgress) purgeProgress.push_back(importer.purgeProgress());
        });
    }
    long count(ImporterProperty property) const { return std::count(properties.begin(), properties.end(), property); }
};

TEST_F(UsageImporterTest, ARunWritesLogsAndActivationsAndCountsThePhoneInTodaysFigures) {
    writeLogs();
    UsageSample phone = testing::slotSample("2025-03-14", "phone-chatgpt", localDate(2025, 3, 14, 8));
    phone.sessions = 3;
    phone.inputTokens = 40;
    phone.outputTokens = 60;
    phone.estimatedCostCents = 5;
    storeSamples({phone, testing::slotSample("2025-03-13", "phone-claude", localDate(2025, 3, 13, 8), 9)});
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    activity.record("com.openai.chat", localDate(2025, 3, 14, 11, 0));
    activity.record("com.openai.chat", localDate(2025, 3, 14, 11, 30));
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(support());
    UsageImporter importer(environment(), storeOpener(), settings, activity);
    Observed observed;
    observed.attach(importer);

    const ImportRunReport report = importer.runImport();
    EXPECT_EQ(report.detectedTools,
              (std::vector<UsageTool>{UsageTool::claudeCode, UsageTool::codex, UsageTool::macChatGPT}));
    EXPECT_EQ(importer.detectedTools(), report.detectedTools);
    EXPECT_EQ(report.samplesInserted, 2);
    EXPECT_EQ(report.filesRead, 1);
    EXPECT_FALSE(report.lastError);

    const auto samples = storedSamples();
    ASSERT_EQ(samples.size(), 4u);
    EXPECT_EQ(samples[1].tool, "claude-code");
    EXPECT_EQ(samples[1].sessions, 2);  // 10:15 and 14:00 are more than two hours apart
    EXPECT_EQ(samples[1].inputTokens + samples[1].outputTokens, 9100);
    EXPECT_EQ(samples[1].updatedAt, now);
    EXPECT_EQ(samples[2].tool, "mac-chatgpt");
    EXPECT_EQ(samples[2].requests, 2);
    EXPECT_EQ(importer.todaySessions(), 2 + 1 + 3);
    EXPECT_EQ(importer.todayTokens(), 9100 + 100);
    EXPECT_EQ(importer.todayCostCents(), samples[1].estimatedCostCents + 5);

    EXPECT_EQ(importer.lastImport(), now);
    EXPECT_EQ(settings.dateValue("lastImportDate"), now);
    EXPECT_FALSE(importer.isImporting());
    std::erase(observed.properties, ImporterProperty::purgeProgress);
    EXPECT_EQ(observed.properties,
              (std::vector<ImporterProperty>{ImporterProperty::isImporting, ImporterProperty::lastError,
                                             ImporterProperty::detectedTools, ImporterProperty::lastImport,
                                             ImporterProperty::todaySessions, ImporterProperty::todayTokens,
                                             ImporterProperty::todayCostCents, ImporterProperty::isImporting}));
    // A new engine starts from the stored time of the last import.
    EXPECT_EQ(UsageImporter(environment(), storeOpener(), settings, activity).lastImport(), now);
}

TEST_F(UsageImporterTest, ARunWithNothingChangedReusesTheFilesAndTouchesNothing) {
    writeLogs();
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    MemorySettingsStore settings;
    UsageImporter importer(environment(), storeOpener(), settings, activity);
    importer.runImport();
    Observed observed;
    observed.attach(importer);
    now = now.addingSeconds(15);

    const ImportRunReport again = importer.runImport();
    EXPECT_EQ(again.samplesUnchanged, 1);
    EXPECT_EQ(again.samplesInserted + again.samplesUpdated, 0);
    EXPECT_EQ(again.filesReused, 1);
    EXPECT_EQ(storedSamples()[0].updatedAt, now.addingSeconds(-15));
    // Neither today's figures nor the purge, done once, wake the observers.
    EXPECT_EQ(observed.count(ImporterProperty::todaySessions) + observed.count(ImporterProperty::todayTokens) +
                  observed.count(ImporterProperty::todayCostCents) + observed.count(ImporterProperty::purgeProgress),
              0);
}

TEST_F(UsageImporterTest, ThePurgeRunsOnItsOwnThreadAndStoreAndTheSamplesWaitForIt) {
    writeLogs();
    // The run's own key is purged; the two extra records of another key are
    // too few for a full scan and are left to the writer.
    storeSamples({testing::slotSample("2025-03-14", "claude-code", localDate(2025, 3, 1), 1),
                  testing::slotSample("2025-03-14", "claude-code", localDate(2025, 3, 2), 2),
                  testing::slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 2), 1),
                  testing::slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 3), 3),
                  testing::slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 2), 2)});
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::vector<std::thread::id> openedOn;
    SampleStoreOpener blockingSecondOpen = [&, released, file = storeFile()]() -> std::unique_ptr<SampleStore> {
        openedOn.push_back(std::this_thread::get_id());
        if (openedOn.size() == 2) released.wait();
        return std::make_unique<SqliteSampleStore>(file);
    };
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    MemorySettingsStore settings;
    UsageImporter importer(environment(), blockingSecondOpen, settings, activity);
    std::vector<std::string> logLines;
    importer.setLogLine([&](const std::string& line) { logLines.push_back(line); });

    ASSERT_EQ(importer.startImport(), Outcome::completed);
    // Once the logs are read the purge starts; the main side goes on while it waits for its store.
    for (int poll = 0; poll < 500 && !importer.purgeProgress(); ++poll) {
        EXPECT_FALSE(importer.finishImportIfReady());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(importer.purgeProgress(), 0.0);
    EXPECT_FALSE(importer.finishImportIfReady());
    EXPECT_TRUE(importer.detectedTools().empty());
    EXPECT_EQ(storedSamples().size(), 5u);

    release.set_value();
    const auto report = importer.finishImport();
    ASSERT_TRUE(report);
    ASSERT_EQ(openedOn.size(), 2u);
    EXPECT_EQ(openedOn[0], std::this_thread::get_id());
    EXPECT_NE(openedOn[1], std::this_thread::get_id());
    EXPECT_EQ(logLines, std::vector<std::string>{"TallowenCompanion: 1 doublon(s) supprimé(s)"});
    EXPECT_EQ(report->duplicatesRemoved, 1 + 2);
    EXPECT_EQ(report->samplesUpdated, 1);
    EXPECT_FALSE(importer.purgeProgress());
    EXPECT_TRUE(settings.boolValue("usageSamplePurge.v1"));
    const auto samples = storedSamples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].requests, 3);
    EXPECT_EQ(samples[1].updatedAt, now);
}

TEST_F(UsageImporterTest, ThePurgeClearsThousandsOfStoredDuplicatesAndPublishesItsProgress) {
    writeLogs();
    std::vector<UsageSample> stored;
    for (int day = 0; day < 1000; ++day)
        for (int copy = 0; copy < 3; ++copy)
            stored.push_back(testing::slotSample("2024-" + std::to_string(10000 + day), "phone-gemini",
                                                 localDate(2025, 1, 1).addingSeconds(copy), copy));
    storeSamples(stored);
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    MemorySettingsStore settings;
    UsageImporter importer(environment(), storeOpener(), settings, activity);
    Observed observed;
    observed.attach(importer);

    const ImportRunReport report = importer.runImport();
    EXPECT_EQ(report.duplicatesRemoved, 2000);
    EXPECT_EQ(report.samplesInserted, 1);
    ASSERT_GE(observed.purgeProgress.size(), 2u);
    EXPECT_EQ(observed.purgeProgress.front(), 0.0);
    EXPECT_EQ(observed.purgeProgress.back(), std::nullopt);
    for (size_t i = 2; i + 1 < observed.purgeProgress.size(); ++i)
        EXPECT_GT(*observed.purgeProgress[i], 0.0) << i;
    const auto samples = storedSamples();
    ASSERT_EQ(samples.size(), 1001u);
    EXPECT_EQ(samples[0].requests, 2);
}

TEST_F(UsageImporterTest, ASecondRequestDuringARunIsDroppedHereAndInAnotherEngineOnTheFolder) {
    writeLogs();
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::promise<void> reading;
    LogReading slowReading = [&, released](const std::filesystem::path& homeFolder, FileEntries& files,
                                           const LocalCalendar& calendar, ScanProgress* progress) {
        reading.set_value();
        released.wait();
        return readAllLogs(homeFolder, files, calendar, progress);
    };
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(support());
    UsageImporter importer(environment(), storeOpener(), settings, activity, slowReading);
    Observed observed;
    observed.attach(importer);

    EXPECT_EQ(importer.startImport(), Outcome::completed);
    EXPECT_TRUE(importer.isImporting());
    reading.get_future().wait();
    EXPECT_EQ(importer.startImport(), Outcome::droppedRunUnderWay);
    EXPECT_EQ(importer.runImport().outcome, Outcome::droppedRunUnderWay);
    EXPECT_FALSE(importer.finishImportIfReady());

    MemorySettingsStore otherSettings;
    UsageImporter other(environment(), storeOpener(), otherSettings, activity);
    const ImportRunReport dropped = other.runImport();
    EXPECT_EQ(dropped.outcome, Outcome::droppedOtherProcess);
    EXPECT_TRUE(dropped.dropped());
    EXPECT_FALSE(other.isImporting());
    EXPECT_FALSE(other.lastImport());
    // Its panel takes the tools from the store until one of its own runs finds them.
    EXPECT_TRUE(other.state().detectedToolsFromStore);
    EXPECT_FALSE(importer.state().detectedToolsFromStore);

    release.set_value();
    const auto report = importer.finishImport();
    ASSERT_TRUE(report);
    EXPECT_EQ(report->outcome, Outcome::completed);
    EXPECT_EQ(report->samplesInserted, 1);
    EXPECT_FALSE(importer.isImporting());
    EXPECT_FALSE(importer.finishImport());
    EXPECT_EQ(observed.count(ImporterProperty::lastImport), 1);
    EXPECT_EQ(observed.count(ImporterProperty::isImporting), 2);

    // The folder is free again once the run is over.
    EXPECT_EQ(other.runImport().outcome, Outcome::completed);
    EXPECT_FALSE(other.state().detectedToolsFromStore);
    const ImporterState stored = storedImporterState(otherSettings);
    EXPECT_EQ(stored.lastImport, now);
    EXPECT_TRUE(stored.detectedToolsFromStore);
}

TEST_F(UsageImporterTest, ACorruptStoreIsReportedAndTheRunStillCompletes) {
    writeLogs();
    scratch.write("support/store.sqlite", std::string(4096, 'x'));
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(support());
    UsageImporter importer(environment(), storeOpener(), settings, activity);

    const ImportRunReport report = importer.runImport();
    EXPECT_EQ(report.outcome, Outcome::completed);
    ASSERT_TRUE(importer.lastError());
    EXPECT_EQ(importer.lastError()->rfind("Store illisible : ", 0), 0u) << *importer.lastError();
    EXPECT_GT(importer.lastError()->size(), std::string("Store illisible : ").size());
    EXPECT_EQ(report.lastError, importer.lastError());
    EXPECT_EQ(report.samplesInserted, 0);
    EXPECT_FALSE(importer.isImporting());
    EXPECT_EQ(importer.lastImport(), now);
    EXPECT_EQ(importer.todaySessions(), 0);
    // The purge failed with the store: it is tried again next time.
    EXPECT_FALSE(settings.boolValue("usageSamplePurge.v1"));
    // The logs were read all the same.
    EXPECT_TRUE(std::filesystem::exists(support() / "import-state.json"));

    // Once the store is usable again the next run clears the error and writes.
    std::filesystem::remove(storeFile());
    const ImportRunReport next = importer.runImport();
    EXPECT_FALSE(importer.lastError());
    EXPECT_EQ(next.samplesInserted, 1);
    EXPECT_EQ(next.filesReused, 1);
}

TEST_F(UsageImporterTest, AReadOnlySupportFolderStillCompletesTheRunWithAnError) {
    writeLogs();
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    JsonSettingsStore settings = JsonSettingsStore::inSupportFolder(support());
    UsageImporter importer(environment(), storeOpener(), settings, activity);
    ASSERT_FALSE(importer.runImport().lastError);

    scratch.write("home/.claude/projects/-home-dev-proj/session-b.jsonl", claudeLog);
    std::filesystem::permissions(support(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const int probe = ::open((support() / "probe").c_str(), O_WRONLY | O_CREAT, 0644);
    if (probe >= 0) {
        ::close(probe);
        std::filesystem::permissions(support(), std::filesystem::perms::owner_all);
        GTEST_SKIP() << "this user writes into read-only folders";
    }

    now = now.addingSeconds(60);
    const ImportRunReport report = importer.runImport();
    std::filesystem::permissions(support(), std::filesystem::perms::owner_all);
    EXPECT_EQ(report.outcome, Outcome::completed);
    EXPECT_TRUE(importer.lastError());
    EXPECT_EQ(report.filesRead, 1);
    EXPECT_FALSE(importer.isImporting());
    EXPECT_EQ(importer.lastImport(), now);
}

TEST_F(UsageImporterTest, AMachineWithoutAnyToolDetectsOnlyTheActivatedApplications) {
    std::filesystem::create_directories(home());
    AppActivityRecorder activity(support() / AppActivityRecorder::fileName);
    MemorySettingsStore settings;
    UsageImporter importer(environment(), storeOpener(), settings, activity);
    EXPECT_TRUE(importer.runImport().detectedTools.empty());
    EXPECT_TRUE(storedSamples().empty());

    activity.record("ai.perplexity.mac", localDate(2025, 3, 14, 9));
    activity.record("com.anthropic.claudefordesktop", localDate(2025, 3, 14, 9));
    const ImportRunReport report = importer.runImport();
    auto detected = report.detectedTools;
    std::sort(detected.begin(), detected.end());
    EXPECT_EQ(detected, (std::vector<UsageTool>{UsageTool::macClaude, UsageTool::macPerplexity}));
    EXPECT_EQ(report.samplesInserted, 2);
    EXPECT_EQ(importer.todaySessions(), 2);
    EXPECT_EQ(importer.todayTokens(), 0);
}

}  // namespace
}  // namespace tallowen
