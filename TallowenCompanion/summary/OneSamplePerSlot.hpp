#pragma once

#include "model/UsageSample.hpp"

#include <vector>

namespace tallowen {

// Reading for display, a (day key, tool) slot counts once even when the store
// holds duplicates: the sample with the later `updatedAt` wins; on equal
// `updatedAt` the one whose persistent identifier sorts first as text wins,
// and an identical identifier keeps the one already held. Slots come out in
// the order in which each first appears.
std::vector<UsageSample> oneSamplePerSlot(const std::vector<UsageSample>& samples);

// The same choice without copying: the result points into `samples`' targets.
std::vector<const UsageSample*> oneSamplePerSlot(const std::vector<const UsageSample*>& samples);

}  // namespace tallowen
