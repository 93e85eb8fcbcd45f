#pragma once

#include "model/SettingsStore.hpp"
#include "store/SampleStore.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace tallowen {

// "2025-03-14|claude-code": the slot at most one sample may hold.
std::string sampleKey(const std::string& dayKey, const std::string& tool);

inline constexpr const char* purgeDoneSettingsKey = "usageSamplePurge.v1";

struct PurgeOutcome {
    bool ran = false;              // false when the purge had already completed
    int64_t deleted = 0;
    std::optional<std::string> error;  // "Nettoyage des doublons : …"
};

using PurgeProgress = std::function<void(double fraction)>;
using LogLine = std::function<void(const std::string& line)>;

// Removes duplicate samples; returns how many records were deleted.
// Throws StoreError.
int64_t purgeDuplicates(SampleStore& store, const std::set<std::string>& runKeys, const PurgeProgress& progress,
                        int64_t pageSize = 50000);

// The one-time purge of an import run, as a job for a thread of its own: it
// opens a store of its own and touches nothing else.
struct PurgeJob {
    SampleStoreOpener openStore;
    std::set<std::string> runKeys;

    // `ran` is true; `error` is set when the store failed.
    PurgeOutcome run(const PurgeProgress& progress) const;
};

// After a purge that completed: sets the flag and logs
// "TallowenCompanion: N doublon(s) supprimé(s)" when anything was deleted.
void recordPurgeOutcome(const PurgeOutcome& outcome, SettingsStore& settings, const LogLine& log);

// The once-per-installation purge: skipped when the flag is set; on success
// sets the flag and logs "TallowenCompanion: N doublon(s) supprimé(s)" when
// anything was deleted.
PurgeOutcome runOneTimePurge(SampleStore& store, SettingsStore& settings, const std::set<std::string>& runKeys,
                             const PurgeProgress& progress, const LogLine& log);

}  // namespace tallowen
