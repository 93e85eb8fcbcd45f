#include "import/DuplicatePurge.hpp"

#include <algorithm>
#include <optional>

namespace tallowen {
namespace {

// Fewer extra records than this after the run's own keys are cleaned are left
// to the next writing step's indexing rather than paid for with a full scan.
constexpr int64_t fullScanMarginRecords = 400;

// A key splits at its first "|" only; a text without one names no slot.
std::optional<SampleSlot> slotOfKey(const std::string& key) {
    const auto bar = key.find('|');
    if (bar == std::string::npos) return std::nullopt;
    return SampleSlot{key.substr(0, bar), key.substr(bar + 1)};
}

// Keeps the newest record of each key's slot and deletes the others with one
// store-side delete per key; saves once if anything went.
int64_t deduplicateKeys(SampleStore& store, const std::set<std::string>& keys, const PurgeProgress& progress) {
    const double divisor = static_cast<double>(std::max<size_t>(1, keys.size()));
    int64_t deleted = 0;
    size_t done = 0;
    for (const auto& key : keys) {
        if (const auto slot = slotOfKey(key)) {
            if (const auto keeper = store.newestInSlot(*slot)) {
                const int64_t recordCount = store.count(*slot);
                if (recordCount > 1) {
                    store.deleteSlotExcept(*slot, keeper->persistentId);
                    deleted += recordCount - 1;
                }
            }
        }
        ++done;
        if (progress) progress(static_cast<double>(done) / divisor);
    }
    if (deleted > 0) store.save();
    return deleted;
}

std::set<std::string> allStoredKeys(SampleStore& store, int64_t recordCount, int64_t pageSize) {
    std::set<std::string> keys;
    for (int64_t offset = 0; offset < recordCount; offset += pageSize) {
        const auto page = store.slotPage(offset, pageSize);
        for (const auto& slot : page) keys.insert(sampleKey(slot.dayKey, slot.tool));
        if (static_cast<int64_t>(page.size()) < pageSize) break;
    }
    return keys;
}

}  // namespace

std::string sampleKey(const std::string& dayKey, const std::string& tool) { return dayKey + "|" + tool; }

int64_t purgeDuplicates(SampleStore& store, const std::set<std::string>& runKeys, const PurgeProgress& progress,
                        int64_t pageSize) {
    const auto runKeyCount = static_cast<int64_t>(runKeys.size());
    if (runKeyCount >= store.count()) return 0;

    int64_t deleted = deduplicateKeys(store, runKeys, progress);

    const int64_t remaining = store.count();
    if (runKeyCount + fullScanMarginRecords >= remaining) return deleted;

    std::set<std::string> otherKeys = allStoredKeys(store, remaining, std::max<int64_t>(1, pageSize));
    for (const auto& key : runKeys) otherKeys.erase(key);
    deleted += deduplicateKeys(store, otherKeys, progress);
    return deleted;
}

namespace {

PurgeOutcome purgeReporting(SampleStore& store, const std::set<std::string>& runKeys, const PurgeProgress& progress) {
    PurgeOutcome outcome;
    outcome.ran = true;
    try {
        outcome.deleted = purgeDuplicates(store, runKeys, progress);
    } catch (const StoreError& error) {
        outcome.error = std::string("Nettoyage des doublons : ") + error.what();
    }
    return outcome;
}

}  // namespace

PurgeOutcome PurgeJob::run(const PurgeProgress& progress) const {
    std::unique_ptr<SampleStore> store;
    try {
        store = openStore();
    } catch (const std::exception& error) {
        PurgeOutcome failed;
        failed.ran = true;
        failed.error = std::string("Nettoyage des doublons : ") + error.what();
        return failed;
    }
    return purgeReporting(*store, runKeys, progress);
}

void recordPurgeOutcome(const PurgeOutcome& outcome, SettingsStore& settings, const LogLine& log) {
    if (!outcome.ran || outcome.error) return;
    settings.setBool(purgeDoneSettingsKey, true);
    if (outcome.deleted > 0 && log)
        log("TallowenCompanion: " + std::to_string(outcome.deleted) + " doublon(s) supprimé(s)");
}

PurgeOutcome runOneTimePurge(SampleStore& store, SettingsStore& settings, const std::set<std::string>& runKeys,
                             const PurgeProgress& progress, const LogLine& log) {
    if (settings.boolValue(purgeDoneSettingsKey)) return PurgeOutcome{};
    if (progress) progress(0);
    const PurgeOutcome outcome = purgeReporting(store, runKeys, progress);
    recordPurgeOutcome(outcome, settings, log);
    return outcome;
}

}  // namespace tallowen
