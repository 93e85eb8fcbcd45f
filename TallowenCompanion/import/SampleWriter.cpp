#include "import/SampleWriter.hpp"

#include "import/DaySample.hpp"
#include "import/DuplicatePurge.hpp"

#include <unordered_map>

namespace tallowen {
namespace {

// The writing step's keeper: the later `updatedAt`, then the identifier text
// that sorts first; on equal texts the sample already held stays.
bool replacesHeld(const UsageSample& candidate, const UsageSample& held) {
    if (candidate.updatedAt != held.updatedAt) return candidate.updatedAt > held.updatedAt;
    return candidate.persistentId < held.persistentId;
}

// The stored samples by sample key, one per key; the losers are deleted.
std::unordered_map<std::string, UsageSample> indexKeepingOnePerKey(SampleStore& store,
                                                                   std::vector<UsageSample> samples,
                                                                   int64_t& duplicatesRemoved) {
    std::unordered_map<std::string, UsageSample> index;
    index.reserve(samples.size());
    for (auto& sample : samples) {
        // try_emplace leaves `sample` intact when the key is already held.
        auto [slot, isNew] = index.try_emplace(sampleKey(sample.dayKey, sample.tool), std::move(sample));
        if (isNew) continue;
        UsageSample& held = slot->second;
        // The same identifier twice is one record, not a duplicate to delete.
        if (sample.persistentId == held.persistentId) continue;
        if (replacesHeld(sample, held)) std::swap(held, sample);
        store.remove(sample.persistentId);
        ++duplicatesRemoved;
    }
    return index;
}

bool quotaMatches(const UsageSample& stored, const QuotaSnapshot& quota) {
    return stored.quotaPrimaryPercent == quota.primaryPercent && stored.quotaPrimaryResetAt == quota.primaryResetAt &&
           stored.quotaSecondaryPercent == quota.secondaryPercent &&
           stored.quotaSecondaryResetAt == quota.secondaryResetAt && stored.quotaPlan == quota.plan;
}

bool dayMatches(const UsageSample& stored, const DayUsage& day) {
    return stored.sessions == static_cast<int64_t>(day.sessions.size()) && stored.requests == day.requests &&
           stored.inputTokens == day.inputTokens && stored.outputTokens == day.outputTokens &&
           stored.episodeHours == day.episodeHours && stored.estimatedCostCents == day.costCents &&
           stored.estimatedWaterMilliliters == day.waterMilliliters &&
           (!day.quota || quotaMatches(stored, *day.quota));
}


void writeResults(SampleStore& store, const ToolResults& results, Date now,
                  std::unordered_map<std::string, UsageSample>& index, SampleWriteOutcome& outcome) {
    for (const auto& [tool, days] : results) {
        const std::string toolText(rawValue(tool));
        for (const auto& [dayKey, day] : days) {
            auto found = index.find(sampleKey(dayKey, toolText));
            if (found != index.end()) {
                UsageSample& stored = found->second;
                if (dayMatches(stored, day)) {
                    ++outcome.unchanged;
                    continue;
                }
                copyDayIntoSample(stored, day);
                stored.updatedAt = now;
                store.update(stored);
                ++outcome.updated;
            } else {
                UsageSample sample = UsageSample::created(now);
                sample.dayKey = dayKey;
                sample.tool = toolText;
                copyDayIntoSample(sample, day);
                store.insert(sample);
                ++outcome.inserted;
            }
        }
    }
}

}  // namespace

SampleWriteOutcome writeSamples(SampleStore& store, const ToolResults& results, Date now) {
    SampleWriteOutcome outcome;
    std::vector<UsageSample> stored;
    try {
        stored = store.fetchAll();
    } catch (const StoreError& error) {
        outcome.error = unreadableStoreText(error);
        return outcome;
    }
    // Any later failure loses the pending changes, as a failed save does: the
    // counts then say that nothing was written.
    try {
        auto index = indexKeepingOnePerKey(store, std::move(stored), outcome.duplicatesRemoved);
        writeResults(store, results, now, index, outcome);
        store.save();
    } catch (const StoreError& error) {
        outcome.error = error.what();
        outcome.inserted = outcome.updated = outcome.duplicatesRemoved = 0;
    }
    return outcome;
}

}  // namespace tallowen
