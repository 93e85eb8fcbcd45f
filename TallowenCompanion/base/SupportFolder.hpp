#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tallowen {

enum class HostPlatform { macOS, otherUnix };

HostPlatform currentHostPlatform();

// "TallowenMac" under Application Support on macOS; under $XDG_DATA_HOME, or
// else ~/.local/share, elsewhere.
std::filesystem::path defaultSupportFolder(HostPlatform platform, const std::filesystem::path& home,
                                           const std::optional<std::string>& xdgDataHome);

}  // namespace tallowen
