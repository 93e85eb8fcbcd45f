#pragma once

#include "base/Result.hpp"
#include "store/SampleStore.hpp"

#include <cstdint>
#include <functional>
#include <set>
#include <string>

namespace tallowen {

// "2025-03-14|claude-code": the slot at most one sample may hold.
std::string sampleKey(const std::string& dayKey, const std::string& tool);

inline constexpr const char* purgeDoneSettingsKey = "usageSamplePurge.v1";

using PurgeProgress = std::function<void(double fraction)>;
using LogLine = std::function<void(const std::string& line)>;

// Removes duplicate samples, keeping the newest of each (day, tool) slot:
// first the run's own keys; then, only when the store still holds more than
// 400 records beyond them, every other key found by a scan in pages. Reports
// each key done as a fraction of its pass.
//
// Works on a store of its own, opened here, so that it may run on a thread of
// its own while the caller's store waits. Gives the number deleted, or the
// line for the user: "Nettoyage des doublons : " and the store's description.
Result<int64_t> purgeDuplicates(const SampleStoreOpener& openStore, const std::set<std::string>& runKeys,
                                const PurgeProgress& progress, int64_t pageSize = 50000);

// The one-time purge of an import run, as a value to run on a thread of its own.
struct PurgeJob {
    SampleStoreOpener openStore;
    std::set<std::string> runKeys;

    Result<int64_t> run(const PurgeProgress& progress) const { return purgeDuplicates(openStore, runKeys, progress); }
};

// The console line of a purge that deleted something:
// "TallowenCompanion: 12 doublon(s) supprimé(s)".
std::string purgeLogLine(int64_t deleted);

}  // namespace tallowen
