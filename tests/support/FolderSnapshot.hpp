#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace tallowen::testing {

// Every file and folder under a root, with its bytes, modification time to the
// nanosecond and mode: two snapshots are equal only if nothing was created,
// removed, written or touched.
inline std::map<std::string, std::string> folderSnapshot(const std::filesystem::path& root) {
    std::map<std::string, std::string> entries;
    const auto record = [&](const std::filesystem::path& path) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) return;
#if defined(__APPLE__)
        const struct timespec& modified = status.st_mtimespec;
#else
        const struct timespec& modified = status.st_mtim;
#endif
        std::string entry = std::to_string(modified.tv_sec) + "." + std::to_string(modified.tv_nsec) + " mode " +
                            std::to_string(status.st_mode);
        if (S_ISREG(status.st_mode)) {
            std::ifstream in(path, std::ios::binary);
            std::ostringstream bytes;
            bytes << in.rdbuf();
            entry += " " + bytes.str();
        }
        entries[path.lexically_relative(root).string()] = std::move(entry);
    };
    record(root);
    std::error_code code;
    for (std::filesystem::recursive_directory_iterator it(root, code), end; !code && it != end; it.increment(code))
        record(it->path());
    return entries;
}

}  // namespace tallowen::testing
