#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tallowen {

// The whole file, or nothing when it is missing or unreadable.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

// Writes to a temporary file beside `path`, then renames it over `path`, so a
// reader never sees half a file. Returns false on any failure.
bool writeFileAtomically(const std::filesystem::path& path, std::string_view contents);

// Removes the temporary files that writeFileAtomically left in `folder` when
// its process was killed mid-write ("<name>.tmp-<pid>" of a process that is
// gone, or of this one, which writes nothing while it clears). Failures are
// ignored; returns how many were removed.
int removeStaleTemporaryFiles(const std::filesystem::path& folder);

}  // namespace tallowen
