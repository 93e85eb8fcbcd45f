#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tallowen::testing {

// A fresh folder under the system's temporary folder, removed with its contents.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Writes `contents` at `relative`, creating the folders on the way.
    std::filesystem::path write(const std::filesystem::path& relative, std::string_view contents) const;

private:
    std::filesystem::path path_;
};

}  // namespace tallowen::testing
