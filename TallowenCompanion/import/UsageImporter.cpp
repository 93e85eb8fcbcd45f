#include "import/UsageImporter.hpp"

#include "base/Files.hpp"
#include "base/SupportFolderLock.hpp"
#include "import/ImportStateFile.hpp"
#include "import/SampleWriter.hpp"
#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"

#include <chrono>
#include <cstdio>
#include <exception>
#include <set>

namespace tallowen {

// What the background thread hands back.
struct UsageImporter::FileWork {
    LogReadOutcome logs;
    // An unexpected failure of the file work; the run goes on without results.
    std::optional<std::string> failure;
};

// Members are destroyed last to first: the file work is waited for before
// the lock is let go.
struct UsageImporter::RunInProgress {
    SupportFolderLock lock;
    ToolResults activityResults;
    std::future<FileWork> fileWork;
    std::chrono::steady_clock::time_point startedAt = std::chrono::steady_clock::now();
};

namespace {

std::set<std::string> sampleKeysOf(const ToolResults& results) {
    std::set<std::string> keys;
    for (const auto& [tool, days] : results)
        for (const auto& [key, day] : days) keys.insert(sampleKey(key, std::string(rawValue(tool))));
    return keys;
}

}  // namespace

UsageImporter::FileWork UsageImporter::doFileWork(const std::filesystem::path& homeFolder,
                                                  const std::filesystem::path& supportFolder, LocalCalendar calendar,
                                                  const LogReading& readLogs) {
    FileWork work;
    try {
        const ImportStateFile stateFile(supportFolder);
        ImportState state = stateFile.load();
        work.logs = readLogs(homeFolder, state.files, calendar, nullptr);
        // A failed save only makes the next run read every file again.
        stateFile.save(state);
    } catch (const std::exception& failure) {
        work.logs = LogReadOutcome{};
        work.failure = failure.what();
    }
    return work;
}

UsageImporter::UsageImporter(EngineEnvironment environment, SampleStoreOpener openStore, SettingsStore& settings,
                             AppActivityRecorder& activity, LogReading readLogs)
    : environment_(std::move(environment)),
      openStore_(std::move(openStore)),
      settings_(settings),
      activity_(activity),
      readLogs_(std::move(readLogs)),
      logLine_([](const std::string& line) {
          std::fputs((line + "\n").c_str(), stdout);
          std::fflush(stdout);
      }),
      lastImport_(settings.dateValue(lastImportSettingsKey)) {}

// A run still under way is waited for (its file work holds no engine state)
// and its results are dropped; the next run rebuilds them from the files.
UsageImporter::~UsageImporter() = default;

ImportRunReport::Outcome UsageImporter::startImport() {
    if (isImporting_) return ImportRunReport::Outcome::droppedRunUnderWay;
    std::error_code ignored;
    std::filesystem::create_directories(environment_.supportFolder, ignored);
    SupportFolderLock lock = SupportFolderLock::tryAcquire(environment_.supportFolder);
    // A folder where no lock can be taken is one where no other process can
    // import either; the run goes on and meets the folder's faults itself.
    if (lock.status() == SupportFolderLock::Status::busy) return ImportRunReport::Outcome::droppedOtherProcess;
    // A process killed while it wrote a file of the folder left its temporary file behind.
    removeStaleTemporaryFiles(environment_.supportFolder);

    isImporting_ = true;
    publish(ImporterProperty::isImporting);
    setLastError(std::nullopt);
    ToolResults activityResults = activity_.dayUsage(environment_.calendar);

    auto fileWork = std::async(std::launch::async, doFileWork, environment_.homeFolder,
                               environment_.supportFolder, environment_.calendar, readLogs_);
    run_ = std::make_unique<RunInProgress>(
        RunInProgress{std::move(lock), std::move(activityResults), std::move(fileWork)});
    return ImportRunReport::Outcome::completed;
}

std::optional<ImportRunReport> UsageImporter::finishImportIfReady() {
    if (!run_ || run_->fileWork.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return std::nullopt;
    return finishImport();
}

std::optional<ImportRunReport> UsageImporter::finishImport() {
    if (!run_) return std::nullopt;
    return complete(run_->fileWork.get());
}

ImportRunReport UsageImporter::runImport() {
    const auto started = startImport();
    if (started != ImportRunReport::Outcome::completed) {
        ImportRunReport dropped;
        dropped.outcome = started;
        return dropped;
    }
    return *finishImport();
}

ImportRunReport UsageImporter::complete(FileWork work) {
    ImportRunReport report;
    if (work.failure) logLine_("TallowenCompanion: " + *work.failure);
    report.filesRead = work.logs.counters.filesRead;
    report.filesReused = work.logs.counters.filesReused;
    ToolResults results = std::move(work.logs.results);
    std::vector<UsageTool> detected = std::move(work.logs.detected);

    std::unique_ptr<SampleStore> store;
    try {
        store = openStore_();
    } catch (const std::exception& error) {
        setLastError(unreadableStoreText(error));
    }

    if (store) runPurge(*store, results, report);

    for (auto& [tool, days] : run_->activityResults) {
        if (days.empty()) continue;
        results[tool] = std::move(days);
        detected.push_back(tool);
    }
    detectedTools_ = detected;
    publish(ImporterProperty::detectedTools);

    if (store) {
        try {
            const SampleWriteOutcome written = writeSamples(*store, results, environment_.clock());
            report.samplesInserted = written.inserted;
            report.samplesUpdated = written.updated;
            report.samplesUnchanged = written.unchanged;
            addChecked(report.duplicatesRemoved, written.duplicatesRemoved);
            if (written.error) setLastError(written.error);
        } catch (const StoreError& error) {
            setLastError(std::string(error.what()));
        }
    }

    const Date now = environment_.clock();
    lastImport_ = now;
    settings_.setDate(lastImportSettingsKey, now);
    publish(ImporterProperty::lastImport);

    if (store) recomputeTodayFigures(*store, now);

    store.reset();
    report.detectedTools = detectedTools_;
    report.lastError = lastError_;
    report.elapsedSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - run_->startedAt).count();
    run_.reset();
    isImporting_ = false;
    publish(ImporterProperty::isImporting);
    return report;
}

void UsageImporter::runPurge(SampleStore& store, const ToolResults& readerResults, ImportRunReport& report) {
    // Once done, the purge is skipped without a word to the observers.
    if (settings_.boolValue(purgeDoneSettingsKey)) return;
    const PurgeOutcome purge = runOneTimePurge(
        store, settings_, sampleKeysOf(readerResults), [this](double fraction) { setPurgeProgress(fraction); },
        logLine_);
    if (purge.error) {
        setLastError(purge.error);
    } else if (purge.deleted > 0) {
        addChecked(report.duplicatesRemoved, purge.deleted);
        if (lastError_) setLastError(std::nullopt);
    }
    setPurgeProgress(std::nullopt);
}

void UsageImporter::recomputeTodayFigures(SampleStore& store, Date now) {
    std::vector<UsageSample> today;
    try {
        today = store.fetchByDayKey(dayKey(now, environment_.calendar));
    } catch (const StoreError&) {
        return;
    }
    int64_t sessions = 0;
    int64_t tokens = 0;
    int64_t costCents = 0;
    for (const UsageSample& sample : today) {
        addChecked(sessions, sample.sessions);
        addChecked(tokens, sample.inputTokens);
        addChecked(tokens, sample.outputTokens);
        addChecked(costCents, sample.estimatedCostCents);
    }
    assignIfChanged(todaySessions_, sessions, ImporterProperty::todaySessions);
    assignIfChanged(todayTokens_, tokens, ImporterProperty::todayTokens);
    assignIfChanged(todayCostCents_, costCents, ImporterProperty::todayCostCents);
}

void UsageImporter::publish(ImporterProperty property) const {
    if (observer_) observer_(property);
}

void UsageImporter::setLastError(std::optional<std::string> error) {
    lastError_ = std::move(error);
    publish(ImporterProperty::lastError);
}

void UsageImporter::setPurgeProgress(std::optional<double> progress) {
    purgeProgress_ = progress;
    publish(ImporterProperty::purgeProgress);
}

void UsageImporter::assignIfChanged(int64_t& field, int64_t value, ImporterProperty property) {
    if (field == value) return;
    field = value;
    publish(property);
}

}  // namespace tallowen
