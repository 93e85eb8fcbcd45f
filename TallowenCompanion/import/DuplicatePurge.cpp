#include "import/DuplicatePurge.hpp"

#include <algorithm>
#include <exception>
#include <memory>
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

int64_t purgeStore(SampleStore& store, const std::set<std::string>& runKeys, const PurgeProgress& progress,
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

}  // namespace

std::string sampleKey(const std::string& dayKey, const std::string& tool) { return dayKey + "|" + tool; }

Result<int64_t> purgeDuplicates(const SampleStoreOpener& openStore, const std::set<std::string>& runKeys,
                                const PurgeProgress& progress, int64_t pageSize) {
    try {
        const std::unique_ptr<SampleStore> store = openStore();
        return purgeStore(*store, runKeys, progress, pageSize);
    } catch (const std::exception& error) {
        return failure(std::string("Nettoyage des doublons : ") + error.what());
    }
}

std::string purgeLogLine(int64_t deleted) {
    return "TallowenCompanion: " + std::to_string(deleted) + " doublon(s) supprimé(s)";
}

}  // namespace tallowen
