#include "base/SupportFolder.hpp"

namespace tallowen {

HostPlatform currentHostPlatform() {
#if defined(__APPLE__)
    return HostPlatform::macOS;
#else
    return HostPlatform::otherUnix;
#endif
}

std::filesystem::path defaultSupportFolder(HostPlatform platform, const std::filesystem::path& home,
                                           const std::optional<std::string>& xdgDataHome) {
    if (platform == HostPlatform::macOS) return home / "Library" / "Application Support" / "TallowenMac";
    // An XDG path that is not absolute is invalid and ignored.
    if (xdgDataHome && !xdgDataHome->empty() && std::filesystem::path(*xdgDataHome).is_absolute())
        return std::filesystem::path(*xdgDataHome) / "TallowenMac";
    return home / ".local" / "share" / "TallowenMac";
}

}  // namespace tallowen
