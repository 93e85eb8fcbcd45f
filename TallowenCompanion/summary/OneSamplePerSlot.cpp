#include "summary/OneSamplePerSlot.hpp"

#include <map>
#include <string>
#include <utility>

namespace tallowen {

bool displayKeeperReplaces(const UsageSample& held, const UsageSample& candidate) {
    if (candidate.updatedAt != held.updatedAt) return candidate.updatedAt > held.updatedAt;
    return candidate.persistentId < held.persistentId;
}

std::vector<UsageSample> oneSamplePerSlot(std::vector<UsageSample> samples) {
    std::map<std::pair<std::string, std::string>, UsageSample> kept;
    for (UsageSample& sample : samples) {
        auto [slot, inserted] = kept.try_emplace({sample.dayKey, sample.tool}, sample);
        if (!inserted && displayKeeperReplaces(slot->second, sample)) slot->second = std::move(sample);
    }
    std::vector<UsageSample> result;
    result.reserve(kept.size());
    for (auto& [slot, sample] : kept) result.push_back(std::move(sample));
    return result;
}

}  // namespace tallowen
