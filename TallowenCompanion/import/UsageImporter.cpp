#include "import/UsageImporter.hpp"

#include "base/SupportFolderLock.hpp"
#include "import/SampleWriter.hpp"
#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"

#include <chrono>
#include <cstdio>
#include <exception>
#include <set>

namespace tallowen {

// Members are destroyed last to first: the file work is waited for before
// the lock is let go.
struct UsageImporter::RunInProgress {
    SupportFolderLock lock;
    ToolResults activityResults;
    // Set when the file work runs on a thread of the engine's own.
    std::future<ImportFileWork> fileWork;
    bool purgeUnderWay = false;
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

std::optional<ImportFileWork> UsageImporter::beginRun(ImportRunReport::Outcome& outcome) {
    outcome = ImportRunReport::Outcome::droppedRunUnderWay;
    if (isImporting_) return std::nullopt;
    std::error_code ignored;
    std::filesystem::create_directories(environment_.supportFolder, ignored);
    SupportFolderLock lock = SupportFolderLock::tryAcquire(environment_.supportFolder);
    // A folder where no lock can be taken is one where no other process can
    // import either; the run goes on and meets the folder's faults itself.
    outcome = ImportRunReport::Outcome::droppedOtherProcess;
    if (lock.status() == SupportFolderLock::Status::busy) return std::nullopt;

    outcome = ImportRunReport::Outcome::completed;
    isImporting_ = true;
    publish(ImporterProperty::isImporting);
    setLastError(std::nullopt);
    run_ = std::make_unique<RunInProgress>(
        RunInProgress{std::move(lock), activity_.dayUsage(environment_.calendar), {}, false,
                      std::chrono::steady_clock::now()});
    return ImportFileWork{environment_.homeFolder, environment_.supportFolder, environment_.calendar, readLogs_, {}, {}};
}

std::optional<PurgeJob> UsageImporter::purgeJob(const ImportFileWork& work) {
    // Once done, the purge is skipped without a word to the observers.
    if (!run_ || settings_.boolValue(purgeDoneSettingsKey)) return std::nullopt;
    run_->purgeUnderWay = true;
    setPurgeProgress(0.0);
    return PurgeJob{openStore_, sampleKeysOf(work.logs.results)};
}

void UsageImporter::purgeProgressed(double fraction) {
    if (run_ && run_->purgeUnderWay) setPurgeProgress(fraction);
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

std::optional<ImportRunReport> UsageImporter::finishImportIfReady() {
    if (!run_ || !run_->fileWork.valid() ||
        run_->fileWork.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return std::nullopt;
    return finishImport();
}

std::optional<ImportRunReport> UsageImporter::finishImport() {
    if (!run_ || !run_->fileWork.valid()) return std::nullopt;
    return finishWith(run_->fileWork.get());
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

ImportRunReport UsageImporter::finishWith(ImportFileWork work) {
    std::optional<PurgeOutcome> purge;
    if (const std::optional<PurgeJob> job = purgeJob(work))
        purge = job->run([this](double fraction) { purgeProgressed(fraction); });
    return completeRun(std::move(work), std::move(purge));
}

ImportRunReport UsageImporter::completeRun(ImportFileWork work, std::optional<PurgeOutcome> purge) {
    ImportRunReport report;
    if (!run_) {
        report.outcome = ImportRunReport::Outcome::droppedRunUnderWay;
        return report;
    }
    if (work.failure) logLine_("TallowenCompanion: " + *work.failure);
    report.filesRead = work.logs.counters.filesRead;
    report.filesReused = work.logs.counters.filesReused;
    ToolResults results = std::move(work.logs.results);
    std::vector<UsageTool> detected = std::move(work.logs.detected);

    if (purge) {
        applyPurge(*purge, report);
    } else if (run_->purgeUnderWay) {
        // A purge handed out and never run: it is due again next time.
        run_->purgeUnderWay = false;
        setPurgeProgress(std::nullopt);
    }

    std::unique_ptr<SampleStore> store;
    try {
        store = openStore_();
    } catch (const std::exception& error) {
        setLastError(unreadableStoreText(error));
    }

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

void UsageImporter::applyPurge(const PurgeOutcome& purge, ImportRunReport& report) {
    run_->purgeUnderWay = false;
    recordPurgeOutcome(purge, settings_, logLine_);
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
