#include "import/UsageImporter.hpp"

#include "base/Files.hpp"
#include "base/SupportFolderLock.hpp"
#include "import/SampleWriter.hpp"
#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"

#include <atomic>
#include <chrono>
#include <exception>
#include <set>

namespace tallowen {

// Members are destroyed last to first: the purge and the file work are
// waited for before what they use and the lock are let go.
struct UsageImporter::RunInProgress {
    RunInProgress(SupportFolderLock heldLock, ToolResults activity)
        : lock(std::move(heldLock)), activityResults(std::move(activity)) {}

    SupportFolderLock lock;
    ToolResults activityResults;
    // Shared with the file work's thread, which writes it while the shell reads.
    std::shared_ptr<ScanProgress> progress = std::make_shared<ScanProgress>();
    // Set when the file work runs on a thread of the engine's own.
    std::future<ImportFileWork> fileWork;
    std::chrono::steady_clock::time_point startedAt = std::chrono::steady_clock::now();

    // Once the file work is back.
    bool filesRead = false;
    ToolResults results;
    std::vector<UsageTool> detected;
    ImportRunReport report;
    std::unique_ptr<SampleStore> store;

    // The purge's latest fraction, written by its thread and read here: the
    // only value the two threads share.
    std::atomic<double> purgeFraction{0};
    std::future<Result<int64_t>> purge;
    // A purge handed out and not finished yet.
    bool purgeUnderWay = false;
};

namespace {

std::set<std::string> sampleKeysOf(const ToolResults& results) {
    std::set<std::string> keys;
    for (const auto& [tool, days] : results)
        for (const auto& [key, day] : days) keys.insert(sampleKey(key, std::string(rawValue(tool))));
    return keys;
}

}  // namespace

UsageImporter::UsageImporter(EngineEnvironment environment, SampleStoreOpener openStore, SettingsStore& settings,
                             AppActivityRecorder& activity, LogReading readLogs)
    : environment_(std::move(environment)),
      openStore_(std::move(openStore)),
      settings_(settings),
      activity_(activity),
      readLogs_(std::move(readLogs)),
      lastImport_(settings.dateValue(lastImportSettingsKey)) {}

// A run still under way is waited for (its file work holds no engine state)
// and its results are dropped; the next run rebuilds them from the files.
UsageImporter::~UsageImporter() = default;

std::optional<ImportFileWork> UsageImporter::beginRun(ImportRunReport::Outcome& outcome) {
    outcome = ImportRunReport::Outcome::droppedRunUnderWay;
    if (isImporting_) return std::nullopt;
    std::error_code ignored;
    std::filesystem::create_directories(environment_.supportFolder, ignored);
    SupportFolderLock lock = SupportFolderLock::tryAcquire(environment_.supportFolder);
    // A folder where no lock can be taken is one where no other process can
    // import either; the run goes on and meets the folder's faults itself.
    lastRequestDroppedElsewhere_ = lock.status() == SupportFolderLock::Status::busy;
    outcome = ImportRunReport::Outcome::droppedOtherProcess;
    if (lastRequestDroppedElsewhere_) return std::nullopt;
    // A process killed while it wrote a file of the folder left its temporary file behind.
    removeStaleTemporaryFiles(environment_.supportFolder);

    isImporting_ = true;
    publish(ImporterProperty::isImporting);
    setLastError(std::nullopt);
    run_ = std::make_unique<RunInProgress>(std::move(lock), activity_.dayUsage(environment_.calendar));
    outcome = ImportRunReport::Outcome::completed;
    return ImportFileWork{environment_.homeFolder, environment_.supportFolder, environment_.calendar, readLogs_,
                          run_->progress, {}, {}};
}

ImportRunReport::Outcome UsageImporter::startImport() {
    ImportRunReport::Outcome outcome;
    std::optional<ImportFileWork> work = beginRun(outcome);
    if (!work) return outcome;
    run_->fileWork = std::async(std::launch::async, [work = std::move(*work)]() mutable {
        work.run();
        return std::move(work);
    });
    return outcome;
}

std::optional<ImportRunReport> UsageImporter::finishImportIfReady() { return advance(false); }

std::optional<ImportRunReport> UsageImporter::finishImport() { return advance(true); }

const ScanProgress* UsageImporter::scanProgress() const {
    return run_ && !run_->filesRead ? run_->progress.get() : nullptr;
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

std::optional<ImportRunReport> UsageImporter::advance(bool wait) {
    constexpr auto pollInterval = std::chrono::milliseconds(40);
    // A run driven in steps is not moved on from here.
    if (!run_ || (!run_->filesRead && !run_->fileWork.valid())) return std::nullopt;
    if (!run_->filesRead) {
        if (!wait && run_->fileWork.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return std::nullopt;
        if (std::optional<PurgeJob> job = filesRead(run_->fileWork.get())) {
            run_->purge = std::async(std::launch::async, [job = std::move(*job), fraction = &run_->purgeFraction] {
                return job.run([fraction](double done) { fraction->store(done, std::memory_order_relaxed); });
            });
        }
    }
    if (run_->purge.valid()) {
        for (;;) {
            const bool done = run_->purge.wait_for(wait ? pollInterval : std::chrono::milliseconds(0)) ==
                              std::future_status::ready;
            const double fraction = run_->purgeFraction.load(std::memory_order_relaxed);
            if (purgeProgress_ != fraction) setPurgeProgress(fraction);
            if (done) break;
            if (!wait) return std::nullopt;
        }
        purgeFinished(run_->purge.get());
    }
    return complete();
}

std::optional<PurgeJob> UsageImporter::filesRead(ImportFileWork work) {
    if (!run_ || run_->filesRead) return std::nullopt;
    RunInProgress& run = *run_;
    run.filesRead = true;
    if (work.failure && logLine_) logLine_("TallowenCompanion: " + *work.failure);
    run.report.filesRead = work.logs.counters.filesRead;
    run.report.filesReused = work.logs.counters.filesReused;
    run.results = std::move(work.logs.results);
    run.detected = std::move(work.logs.detected);

    try {
        run.store = openStore_();
    } catch (const std::exception& error) {
        setLastError(unreadableStoreText(error));
        return std::nullopt;
    }
    // Once done, the purge is skipped without a word to the observers.
    if (settings_.boolValue(purgeDoneSettingsKey)) return std::nullopt;
    run.purgeUnderWay = true;
    setPurgeProgress(0.0);
    return PurgeJob{openStore_, sampleKeysOf(run.results)};
}

void UsageImporter::purgeProgressed(double fraction) {
    if (run_ && run_->purgeUnderWay && purgeProgress_ != fraction) setPurgeProgress(fraction);
}

ImportRunReport UsageImporter::completeRun(std::optional<Result<int64_t>> purged) {
    if (!run_ || !run_->filesRead) {
        ImportRunReport dropped;
        dropped.outcome = ImportRunReport::Outcome::droppedRunUnderWay;
        return dropped;
    }
    if (purged) {
        purgeFinished(*purged);
    } else if (run_->purgeUnderWay) {
        // A purge handed out and never run is due again next time.
        run_->purgeUnderWay = false;
        setPurgeProgress(std::nullopt);
    }
    return complete();
}

void UsageImporter::purgeFinished(const Result<int64_t>& purged) {
    run_->purgeUnderWay = false;
    if (!purged) {
        setLastError(purged.error());
    } else {
        settings_.setBool(purgeDoneSettingsKey, true);
        if (*purged > 0) {
            addChecked(run_->report.duplicatesRemoved, *purged);
            if (lastError_) setLastError(std::nullopt);
            if (logLine_) logLine_(purgeLogLine(*purged));
        }
    }
    setPurgeProgress(std::nullopt);
}

ImportRunReport UsageImporter::complete() {
    RunInProgress& run = *run_;
    ImportRunReport report = std::move(run.report);
    ToolResults results = std::move(run.results);
    std::vector<UsageTool> detected = std::move(run.detected);
    for (auto& [tool, days] : run.activityResults) {
        if (days.empty()) continue;
        results[tool] = std::move(days);
        detected.push_back(tool);
    }
    detectedTools_ = detected;
    publish(ImporterProperty::detectedTools);

    if (run.store) {
        try {
            const SampleWriteOutcome written = writeSamples(*run.store, results, environment_.clock());
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

    if (run.store) recomputeTodayFigures(*run.store, now);

    report.detectedTools = detectedTools_;
    report.lastError = lastError_;
    report.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - run.startedAt).count();
    run_.reset();
    hasCompletedRun_ = true;
    isImporting_ = false;
    publish(ImporterProperty::isImporting);
    return report;
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

ImporterState UsageImporter::state() const {
    return ImporterState{isImporting_,   lastImport_,   lastError_, detectedTools_,
                         purgeProgress_, !hasCompletedRun_ && lastRequestDroppedElsewhere_};
}

ImporterState storedImporterState(const SettingsStore& settings) {
    ImporterState state;
    state.lastImport = settings.dateValue(lastImportSettingsKey);
    state.detectedToolsFromStore = true;
    return state;
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
