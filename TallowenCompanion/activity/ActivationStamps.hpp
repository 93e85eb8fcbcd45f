#pragma once

#include "model/Date.hpp"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// Per bundle identifier, the instants its application came to the front,
// oldest first.
using ActivationStamps = std::map<std::string, std::vector<Date>>;

// A second activation sooner than this after the last stamp is a repeat.
inline constexpr double activationRepeatSeconds = 60.0;
// Stamps are kept for 60 days.
inline constexpr double activationRetentionSeconds = 5184000.0;

// Adds `now` to the application's stamps unless it lies less than a minute
// after the last one (a clock set back counts as less). Drops, for that
// application only, the stamps not strictly after now − 60 days. Returns
// whether a stamp was added.
bool addActivationStamp(ActivationStamps& stamps, const std::string& bundleId, Date now);

// "app-activations.json": an object of arrays of seconds since 2001.
std::string encodeActivationStamps(const ActivationStamps& stamps);
// Nothing unless the whole text is such an object.
std::optional<ActivationStamps> decodeActivationStamps(std::string_view text);

}  // namespace tallowen
