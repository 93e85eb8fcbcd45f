#include "import/UsageImporter.hpp"

#include "model/MemorySettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/Dates.hpp"
#include "support/Samples.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::localDate;
using testing::slotSample;
using Outcome = ImportRunReport::Outcome;
using Property = ImporterProperty;

class UsageImporterTest : public ::testing::Test {
protected:
    testing::ScopedTimeZone zone{"Europe/Paris"};
    testing::TempDir scratch;
    std::filesystem::path support = scratch.path() / "support";
    Date now = localDate(2025, 3, 14, 18, 0);
    AppActivityRecorder activity{support / AppActivityRecorder::fileName};
    MemorySettingsStore settings;
    std::vector<Property> published;

    void SetUp() override {
        // Two Claude Code replies at 10:15 and 14:00 in Paris, more than two hours apart: two sessions.
        scratch.write("home/.claude/projects/-home-dev-proj/session-a.jsonl",
                      R"({"type":"assistant","timestamp":"2025-03-14T09:15:02.500Z","message":{"model":"claude-)"
                      R"(sonnet-4-5","usage":{"input_tokens":1000,"cache_creation_input_tokens":2000,)"
                      R"("output_tokens":5000}}})" "\n"
                      R"({"type":"assistant","timestamp":"2025-03-14T13:00:00Z","message":{"model":"claude-)"
                      R"(sonnet-4-5","usage":{"input_tokens":100,"output_tokens":1000}}})" "\n");
        // Codex is installed but has no session yet: detected, without a sample.
        std::filesystem::create_directories(scratch.path() / "home/.codex/sessions");
    }
    EngineEnvironment environment() { return {scratch.path() / "home", support, {}, [this] { return now; }}; }
    SampleStoreOpener opener() const {
        return [file = support / SqliteSampleStore::fileName] { return std::make_unique<SqliteSampleStore>(file); };
    }
    std::unique_ptr<UsageImporter> importer(SampleStoreOpener open = {}) {
        auto made = std::make_unique<UsageImporter>(environment(), open ? open : opener(), settings, activity);
        made->setObserver([this](Property property) { published.push_back(property); });
        return made;
    }
    std::vector<UsageSample> stored() const {
        auto samples = SqliteSampleStore(support / SqliteSampleStore::fileName).fetchAll();
        std::ranges::sort(samples, {}, [](const UsageSample& sample) { return std::tie(sample.dayKey, sample.tool); });
        return samples;
    }
    void store(const std::vector<UsageSample>& samples) const {
        std::filesystem::create_directories(support);
        SqliteSampleStore sqlite(support / SqliteSampleStore::fileName);
        for (const UsageSample& sample : samples) sqlite.insert(sample);
        sqlite.save();
    }
};

TEST_F(UsageImporterTest, ARunWritesLogsAndActivationsAndTheNextOneWithNothingChangedTouchesNothing) {
    UsageSample phone = slotSample("2025-03-14", "phone-chatgpt", localDate(2025, 3, 14, 8));
    std::tie(phone.sessions, phone.inputTokens, phone.estimatedCostCents) = std::tuple(3, 100, 5);
    store({phone, slotSample("2025-03-13", "phone-claude", localDate(2025, 3, 13, 8), 9)});
    activity.record("com.openai.chat", localDate(2025, 3, 14, 11, 0));
    activity.record("com.openai.chat", localDate(2025, 3, 14, 11, 30));
    auto run = importer();

    const ImportRunReport report = run->runImport();
    EXPECT_EQ(report.detectedTools,
              (std::vector<UsageTool>{UsageTool::claudeCode, UsageTool::codex, UsageTool::macChatGPT}));
    EXPECT_EQ((std::vector<int64_t>{report.samplesInserted, report.filesRead}), (std::vector<int64_t>{2, 1}));
    const auto samples = stored();
    ASSERT_EQ(samples.size(), 4u);
    const UsageSample& claude = samples[1];
    EXPECT_EQ(std::tuple(claude.tool, claude.sessions, claude.inputTokens + claude.outputTokens, claude.updatedAt),
              std::tuple("claude-code", 2, 9100, now));
    EXPECT_EQ(std::tuple(samples[2].tool, samples[2].requests), std::tuple("mac-chatgpt", 2));
    EXPECT_EQ((std::vector<int64_t>{run->todaySessions(), run->todayTokens(), run->todayCostCents()}),
              (std::vector<int64_t>{2 + 1 + 3, 9100 + 100, claude.estimatedCostCents + 5}));
    EXPECT_EQ(run->lastImport(), now);
    std::erase(published, Property::purgeProgress);
    EXPECT_EQ(published, (std::vector<Property>{Property::isImporting, Property::lastError, Property::detectedTools,
                                                Property::lastImport, Property::todaySessions, Property::todayTokens,
                                                Property::todayCostCents, Property::isImporting}));
    // A new engine starts from the stored time of the last import.
    EXPECT_EQ(importer()->lastImport(), now);

    published.clear();
    now = now.addingSeconds(15);
    const ImportRunReport again = run->runImport();
    EXPECT_EQ((std::vector<int64_t>{again.samplesInserted, again.samplesUpdated, again.samplesUnchanged,
                                    again.filesReused}),
              (std::vector<int64_t>{0, 0, 2, 1}));
    EXPECT_EQ(stored()[1].updatedAt, now.addingSeconds(-15));
    // Neither today's figures nor the purge, done once, wake the observers.
    EXPECT_EQ(published, (std::vector<Property>{Property::isImporting, Property::lastError, Property::detectedTools,
                                                Property::lastImport, Property::isImporting}));
}

TEST_F(UsageImporterTest, ThePurgeRunsOnItsOwnThreadAndRequestsMeanwhileAreDroppedHereAndInAnotherEngine) {
    // The run's own key is purged; the two extra records of another key are
    // too few for a full scan and are left to the writer.
    store({slotSample("2025-03-14", "claude-code", localDate(2025, 3, 1), 1),
           slotSample("2025-03-14", "claude-code", localDate(2025, 3, 2), 2),
           slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 2), 1),
           slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 3), 3),
           slotSample("2025-03-02", "phone-gemini", localDate(2025, 3, 2), 2)});
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::vector<bool> openedOnMain;
    auto run = importer([&, released, mainThread = std::this_thread::get_id(), open = opener()] {
        openedOnMain.push_back(std::this_thread::get_id() == mainThread);
        if (openedOnMain.size() == 2) released.wait();
        return open();
    });
    std::vector<std::string> logLines;
    run->setLogLine([&](const std::string& line) { logLines.push_back(line); });

    ASSERT_EQ(run->startImport(), Outcome::completed);
    // Once the logs are read the purge starts; the main side goes on while it waits for its store.
    for (int poll = 0; poll < 500 && !run->purgeProgress(); ++poll) {
        EXPECT_FALSE(run->finishImportIfReady());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(run->purgeProgress(), 0.0);
    EXPECT_FALSE(run->finishImportIfReady());
    EXPECT_TRUE(run->detectedTools().empty());
    EXPECT_EQ(stored().size(), 5u);
    EXPECT_EQ(run->startImport(), Outcome::droppedRunUnderWay);
    EXPECT_EQ(run->runImport().outcome, Outcome::droppedRunUnderWay);
    MemorySettingsStore otherSettings;
    UsageImporter other(environment(), opener(), otherSettings, activity);
    EXPECT_EQ(other.runImport().outcome, Outcome::droppedOtherProcess);
    EXPECT_FALSE(other.lastImport());

    release.set_value();
    const auto report = run->finishImport();
    ASSERT_TRUE(report);
    EXPECT_FALSE(run->isImporting() || run->finishImport());
    // The dropped requests published nothing.
    EXPECT_EQ(std::tuple(std::ranges::count(published, Property::lastImport),
                         std::ranges::count(published, Property::isImporting)), std::tuple(1, 2));
    EXPECT_EQ(openedOnMain, (std::vector<bool>{true, false}));
    EXPECT_EQ(logLines, std::vector<std::string>{"TallowenCompanion: 1 doublon(s) supprimé(s)"});
    EXPECT_EQ(std::tuple(report->duplicatesRemoved, report->samplesUpdated), std::tuple(1 + 2, 1));
    const auto samples = stored();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(std::tuple(samples[0].requests, samples[1].updatedAt), std::tuple(3, now));
}

TEST_F(UsageImporterTest, ARunClearsTheTemporaryFilesOfKilledWritersOnly) {
    const pid_t gone = ::fork();
    if (gone == 0) ::_exit(0);
    ::waitpid(gone, nullptr, 0);
    const std::string dead = std::to_string(gone);
    // Kept: still being written by a live process, or not named like a temporary file at all.
    const std::pair<std::string, bool> files[] = {
        {"settings.json.tmp-" + dead, false},         {"import-state.json.tmp-" + std::to_string(::getpid()), false},
        {"app-activations.json.tmp-" + std::to_string(::getppid()), true}, {"notes.tmp-x", true},
        {".tmp-" + dead, true},                       {"a.tmp-" + dead + "0x", true}};
    for (const auto& [name, kept] : files) scratch.write("support/" + name, "{\"half");
    importer()->runImport();
    for (const auto& [name, kept] : files) EXPECT_EQ(std::filesystem::exists(support / name), kept) << name;
}

}  // namespace
}  // namespace tallowen
