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

std::vector<UsageSample> oneSamplePerSlot(const std::vector<UsageSample>& samples) {
    // Indices into `samples`, so that the slot keys can view the input's texts.
    std::unordered_map<SlotKey, size_t, SlotKeyHash> keeperOfSlot;
    std::vector<size_t> keepers;
    keeperOfSlot.reserve(samples.size());
    for (size_t index = 0; index < samples.size(); ++index) {
        const UsageSample& sample = samples[index];
        const auto [found, inserted] = keeperOfSlot.try_emplace(SlotKey{sample.dayKey, sample.tool}, keepers.size());
        if (inserted) {
            keepers.push_back(index);
        } else if (replacesHeld(sample, samples[keepers[found->second]])) {
            keepers[found->second] = index;
        }
    }
    std::vector<UsageSample> result;
    result.reserve(keepers.size());
    for (const size_t index : keepers) result.push_back(samples[index]);
    return result;
}

}  // namespace tallowen
