#include "import/CursorDayCacheFile.hpp"

#include "base/Files.hpp"
#include "import/ImportStateCodec.hpp"

#include <string_view>

namespace tallowen {
namespace {

constexpr std::string_view timeZonePrefix = "timeZone:";
constexpr std::string_view writeAheadLogSuffix = "-wal";

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

}  // namespace

CursorDayCacheFile::CursorDayCacheFile(std::filesystem::path supportFolder)
    : location_(std::move(supportFolder) / fileName) {}

std::optional<CursorDayCache> CursorDayCacheFile::load() const {
    const auto text = readWholeFile(location_);
    if (!text) return std::nullopt;
    auto state = decodeImportState(*text);
    if (!state) return std::nullopt;
    std::optional<std::string> timeZone;
    std::optional<std::pair<std::string, FileEntry>> database;
    std::optional<std::pair<std::string, FileEntry>> writeAheadLog;
    for (auto& [key, entry] : state->files) {
        if (startsWith(key, timeZonePrefix)) {
            timeZone = key.substr(timeZonePrefix.size());
        } else if (key.size() > writeAheadLogSuffix.size() && key.ends_with(writeAheadLogSuffix)) {
            writeAheadLog.emplace(key, std::move(entry));
        } else {
            if (database) return std::nullopt;
            database.emplace(key, std::move(entry));
        }
    }
    if (!timeZone || !database) return std::nullopt;
    if (writeAheadLog && writeAheadLog->first != database->first + std::string(writeAheadLogSuffix))
        return std::nullopt;
    CursorDayCache cache;
    cache.stamps.databasePath = database->first;
    cache.stamps.database = FileStamp{database->second.size, database->second.modified};
    if (writeAheadLog)
        cache.stamps.writeAheadLog = FileStamp{writeAheadLog->second.size, writeAheadLog->second.modified};
    cache.stamps.timeZone = std::move(*timeZone);
    cache.days = std::move(database->second.days);
    return cache;
}

bool CursorDayCacheFile::save(const std::optional<CursorDayCache>& cache) const {
    if (!cache) {
        std::error_code code;
        std::filesystem::remove(location_, code);
        return !code;
    }
    const CursorStamps& stamps = cache->stamps;
    ImportState state;
    state.files[stamps.databasePath] = FileEntry{stamps.database.size, stamps.database.modified, cache->days};
    if (stamps.writeAheadLog)
        state.files[stamps.databasePath + std::string(writeAheadLogSuffix)] =
            FileEntry{stamps.writeAheadLog->size, stamps.writeAheadLog->modified, {}};
    state.files[std::string(timeZonePrefix) + stamps.timeZone] = FileEntry{};
    return writeFileAtomically(location_, encodeImportState(state));
}

}  // namespace tallowen
