#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tallowen {

// "file:" + the path + "?" + `parameters`, for sqlite3_open_v2 with SQLITE_OPEN_URI.
// The characters that would end or escape the path part are written as %HH.
std::string sqliteFileUri(const std::filesystem::path& path, std::string_view parameters);

}  // namespace tallowen
