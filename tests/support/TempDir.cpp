#include "support/TempDir.hpp"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace tallowen::testing {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tallowen-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, std::filesystem::perm_options::add,
                                 ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::write(const std::filesystem::path& relative, std::string_view contents) const {
    const auto full = path_ / relative;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream out(full, std::ios::binary | std::ios::trunc);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    return full;
}

}  // namespace tallowen::testing
