#pragma once

#include "model/UsageSample.hpp"

#include <vector>

namespace tallowen {

// Whether `candidate` replaces `held` as the one sample shown for their
// (day, tool): a strictly later `updatedAt`, or on equal `updatedAt` the
// persistent identifier text that sorts first; an identical text keeps `held`.
bool displayKeeperReplaces(const UsageSample& held, const UsageSample& candidate);

// One sample per (day key, tool) as read for display, sorted by day key then
// tool text. Duplicates are grouped by their texts, so tools unknown to this
// version are kept too.
std::vector<UsageSample> oneSamplePerSlot(std::vector<UsageSample> samples);

}  // namespace tallowen
