#pragma once

#include "activity/AppActivityRecorder.hpp"
#include "model/EngineEnvironment.hpp"
#include "model/SettingsStore.hpp"
#include "import/DuplicatePurge.hpp"
#include "import/ImportFileWork.hpp"
#include "import/ImportRunReport.hpp"
#include "import/ImporterState.hpp"
#include "readers/UsageReaders.hpp"
#include "store/SampleStore.hpp"

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

inline constexpr const char* lastImportSettingsKey = "lastImportDate";

// The published properties, named for observers.
enum class ImporterProperty {
    isImporting,
    lastImport,
    lastError,
    detectedTools,
    todaySessions,
    todayTokens,
    todayCostCents,
    purgeProgress,
};

// The engine the rest of the application talks to. One import run reads the
// logs and the activation stamps, runs the one-time duplicate purge, writes
// one sample per day and tool and publishes a few figures.
//
// Everything here is called on one thread (the main thread). The file work
// of a run (the import state file and the logs) runs on one background thread
// and comes back as a value; then the one-time purge, when it has not
// completed yet, runs on a thread of its own with a store of its own while
// its progress comes back as a plain value, and the samples are written only
// once it has finished. Nothing else is shared with those threads.
class UsageImporter {
public:
    UsageImporter(EngineEnvironment environment, SampleStoreOpener openStore, SettingsStore& settings,
                  AppActivityRecorder& activity, LogReading readLogs = readAllLogs);
    ~UsageImporter();
    UsageImporter(const UsageImporter&) = delete;
    UsageImporter& operator=(const UsageImporter&) = delete;

    // Starts a run and sends its file work to the background. A request made
    // while a run is under way, here or in another process on the same
    // support folder, is dropped: nothing changes and the outcome says why.
    ImportRunReport::Outcome startImport();
    // Moves the run on without waiting: starts the purge once the file work
    // is back, publishes its progress, and completes the run once it has
    // finished. The report when the run completed; nothing while it is still
    // going on or when no run is under way. Call it often: the purge's
    // progress is published from here.
    std::optional<ImportRunReport> finishImportIfReady();
    // Completes the run under way, waiting for its file work and its purge
    // (whose progress is published meanwhile).
    std::optional<ImportRunReport> finishImport();
    // A whole run: start, then finish. A dropped request gives a report that says so.
    ImportRunReport runImport();

    // The same run in steps, for a shell that runs the file work and the
    // purge on threads (tasks) of its own and hands their results back here:
    // beginRun guards and starts the run and gives its file work, to run
    // anywhere, once (nothing when the request is dropped, `outcome` saying
    // why); filesRead takes the work back and gives the one-time purge to
    // run when it is due (its progress 0 published); purgeProgressed
    // publishes the purge's fractions; completeRun writes the samples, with
    // the purge's result when there was one.
    std::optional<ImportFileWork> beginRun(ImportRunReport::Outcome& outcome);
    std::optional<PurgeJob> filesRead(ImportFileWork work);
    void purgeProgressed(double fraction);
    ImportRunReport completeRun(std::optional<Result<int64_t>> purged);

    // Called after every assignment of a published property.
    void setObserver(std::function<void(ImporterProperty)> observer) { observer_ = std::move(observer); }
    // Where console lines ("TallowenCompanion: …") go; nowhere unless a shell asks.
    void setLogLine(LogLine logLine) { logLine_ = std::move(logLine); }

    bool isImporting() const { return isImporting_; }
    std::optional<Date> lastImport() const { return lastImport_; }
    const std::optional<std::string>& lastError() const { return lastError_; }
    const std::vector<UsageTool>& detectedTools() const { return detectedTools_; }
    int64_t todaySessions() const { return todaySessions_; }
    int64_t todayTokens() const { return todayTokens_; }
    int64_t todayCostCents() const { return todayCostCents_; }
    std::optional<double> purgeProgress() const { return purgeProgress_; }
    // The published properties together, for a panel.
    ImporterState state() const;
    // How far the reading of the run under way has come, for a shell that
    // shows progress while it waits; nothing when no run is reading.
    const ScanProgress* scanProgress() const;

private:
    struct RunInProgress;

    std::optional<ImportRunReport> advance(bool wait);
    void purgeFinished(const Result<int64_t>& purged);
    ImportRunReport complete();
    void recomputeTodayFigures(SampleStore& store, Date now);

    void publish(ImporterProperty property) const;
    void setLastError(std::optional<std::string> error);
    void setPurgeProgress(std::optional<double> progress);
    void assignIfChanged(int64_t& field, int64_t value, ImporterProperty property);

    EngineEnvironment environment_;
    SampleStoreOpener openStore_;
    SettingsStore& settings_;
    AppActivityRecorder& activity_;
    LogReading readLogs_;
    std::function<void(ImporterProperty)> observer_;
    LogLine logLine_;

    bool isImporting_ = false;
    std::optional<Date> lastImport_;
    std::optional<std::string> lastError_;
    std::vector<UsageTool> detectedTools_;
    int64_t todaySessions_ = 0;
    int64_t todayTokens_ = 0;
    int64_t todayCostCents_ = 0;
    std::optional<double> purgeProgress_;

    std::unique_ptr<RunInProgress> run_;
    bool hasCompletedRun_ = false;
    bool lastRequestDroppedElsewhere_ = false;
};

// The importer's state for a panel when no import runs in this process: the
// last import from the settings, the detected tools from the store.
ImporterState storedImporterState(const SettingsStore& settings);

}  // namespace tallowen
