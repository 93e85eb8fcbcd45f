#pragma once

#include "activity/AppActivityRecorder.hpp"
#include "model/EngineEnvironment.hpp"
#include "model/SettingsStore.hpp"
#include "import/DuplicatePurge.hpp"
#include "import/ImportFileWork.hpp"
#include "import/ImportRunReport.hpp"
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
// of a run (the import state file and the logs) and the one-time purge run
// elsewhere and come back as values; nothing is shared with them while they
// work. A shell with threads of its own drives a run in steps: beginRun, the
// file work, purgeJob and its run, completeRun. startImport and finishImport
// do the same with a thread of the engine's own.
class UsageImporter {
public:
    UsageImporter(EngineEnvironment environment, SampleStoreOpener openStore, SettingsStore& settings,
                  AppActivityRecorder& activity, LogReading readLogs = readAllLogs);
    ~UsageImporter();
    UsageImporter(const UsageImporter&) = delete;
    UsageImporter& operator=(const UsageImporter&) = delete;

    // Starts a run on this thread: guards against a second one, clears the
    // last error, takes the activations' days and returns the file work for
    // the caller to run anywhere, once. Nothing when the request is dropped,
    // with `outcome` saying why.
    std::optional<ImportFileWork> beginRun(ImportRunReport::Outcome& outcome);
    // After the file work: the one-time purge to run before completing, on
    // its own thread; nothing when it has already completed. Publishes a
    // progress of 0 when there is one.
    std::optional<PurgeJob> purgeJob(const ImportFileWork& work);
    // The purge moved on; ignored when no purge of this run is under way.
    void purgeProgressed(double fraction);
    // Completes the run begun by beginRun with its file work and, when there
    // was one, the purge's outcome: writes the samples and publishes.
    ImportRunReport completeRun(ImportFileWork work, std::optional<PurgeOutcome> purge);

    // Starts a run and sends its file work to a thread of the engine. A request made
    // while a run is under way, here or in another process on the same
    // support folder, is dropped: nothing changes and the outcome says why.
    ImportRunReport::Outcome startImport();
    // Completes the run once its file work is back; nothing while that work is
    // still going on or when no run is under way. Never blocks.
    std::optional<ImportRunReport> finishImportIfReady();
    // Completes the run under way, waiting for its file work.
    std::optional<ImportRunReport> finishImport();
    // A whole run: start, then finish. A dropped request gives a report that says so.
    ImportRunReport runImport();

    // Called after every assignment of a published property.
    void setObserver(std::function<void(ImporterProperty)> observer) { observer_ = std::move(observer); }
    // Where console lines ("TallowenCompanion: …") go; the standard output by default.
    void setLogLine(LogLine logLine) { logLine_ = std::move(logLine); }

    bool isImporting() const { return isImporting_; }
    std::optional<Date> lastImport() const { return lastImport_; }
    const std::optional<std::string>& lastError() const { return lastError_; }
    const std::vector<UsageTool>& detectedTools() const { return detectedTools_; }
    int64_t todaySessions() const { return todaySessions_; }
    int64_t todayTokens() const { return todayTokens_; }
    int64_t todayCostCents() const { return todayCostCents_; }
    std::optional<double> purgeProgress() const { return purgeProgress_; }

private:
    struct RunInProgress;

    ImportRunReport finishWith(ImportFileWork work);
    void applyPurge(const PurgeOutcome& purge, ImportRunReport& report);
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
};

}  // namespace tallowen
