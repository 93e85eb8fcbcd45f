#pragma once

#include "readers/CursorDayCache.hpp"

#include <filesystem>
#include <optional>

namespace tallowen {

// "cursor-days.json" in the support folder: Cursor's days as last read and the
// stamps they were read under. Private to this computer, like the import state,
// and written in the import state's own format so the two share one codec: the
// database's entry holds its stamp and the days, the "-wal" file's entry (when
// there is one) its stamp alone, and an entry named "timeZone:" followed by the
// zone's identity stands for the zone. Failures are silent: a missing or
// undecodable file is no cache, and a failed save only costs a full read.
class CursorDayCacheFile {
public:
    static constexpr const char* fileName = "cursor-days.json";

    explicit CursorDayCacheFile(std::filesystem::path supportFolder);

    std::optional<CursorDayCache> load() const;
    // Writes `cache`, or removes the file when there is none.
    bool save(const std::optional<CursorDayCache>& cache) const;

private:
    std::filesystem::path location_;
};

}  // namespace tallowen
