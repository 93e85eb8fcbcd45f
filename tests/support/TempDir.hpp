#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tallowen::testing {

// A fresh folder under the system's temporary folder, removed with its contents.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallowen-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path_ = pattern;
    }
    ~TempDir() {
        // A test may have left the folder read-only.
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, std::filesystem::perm_options::add,
                                     ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Writes `contents` at `relative`, creating the folders on the way.
    std::filesystem::path write(const std::filesystem::path& relative, std::string_view contents) const {
        const auto full = path_ / relative;
        std::filesystem::create_directories(full.parent_path());
        std::ofstream(full, std::ios::binary | std::ios::trunc)
            .write(contents.data(), static_cast<std::streamsize>(contents.size()));
        return full;
    }

private:
    std::filesystem::path path_;
};

}  // namespace tallowen::testing
