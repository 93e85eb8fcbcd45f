#include "summary/OneSamplePerSlot.hpp"

#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tallowen {
namespace {

using SlotKey = std::pair<std::string_view, std::string_view>;

struct SlotKeyHash {
    size_t operator()(const SlotKey& key) const {
        const size_t day = std::hash<std::string_view>{}(key.first);
        const size_t tool = std::hash<std::string_view>{}(key.second);
        return day ^ (tool + 0x9e3779b97f4a7c15ULL + (day << 6) + (day >> 2));
    }
};

bool replacesHeld(const UsageSample& candidate, const UsageSample& held) {
    if (candidate.updatedAt > held.updatedAt) return true;
    return candidate.updatedAt == held.updatedAt && candidate.persistentId < held.persistentId;
}

}  // namespace

std::vector<const UsageSample*> oneSamplePerSlot(const std::vector<const UsageSample*>& samples) {
    std::unordered_map<SlotKey, size_t, SlotKeyHash> keeperOfSlot;
    std::vector<const UsageSample*> keepers;
    keeperOfSlot.reserve(samples.size());
    for (const UsageSample* sample : samples) {
        const auto [found, inserted] = keeperOfSlot.try_emplace(SlotKey{sample->dayKey, sample->tool}, keepers.size());
        if (inserted) {
            keepers.push_back(sample);
        } else if (replacesHeld(*sample, *keepers[found->second])) {
            keepers[found->second] = sample;
        }
    }
    return keepers;
}

std::vector<UsageSample> oneSamplePerSlot(const std::vector<UsageSample>& samples) {
    std::vector<const UsageSample*> all;
    all.reserve(samples.size());
    for (const UsageSample& sample : samples) all.push_back(&sample);
    std::vector<UsageSample> result;
    for (const UsageSample* keeper : oneSamplePerSlot(all)) result.push_back(*keeper);
    return result;
}

}  // namespace tallowen
