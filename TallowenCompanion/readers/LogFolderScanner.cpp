#include "readers/LogFolderScanner.hpp"

#include "model/DayKey.hpp"
#include "base/Utf8Text.hpp"
#include "model/DaysFromEvents.hpp"
#include "readers/MappedFile.hpp"
#include "readers/TornReadGuard.hpp"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace tallowen {
namespace {

constexpr std::string_view logExtension = ".jsonl";

bool isHidden(std::string_view name) { return !name.empty() && name.front() == '.'; }

// The extension is what follows the last dot, compared case-sensitively.
bool hasLogExtension(std::string_view name) {
    return name.size() > logExtension.size() &&
           name.substr(name.size() - logExtension.size()) == logExtension;
}

struct FolderEntry {
    std::string name;
    bool isFolder = false;
    // Set for log files only, taken while the folder is listed.
    struct stat status {};
};

// The visible entries of one folder, sorted by name so that a walk always
// visits files in the same order. Folders reached through a symbolic link are
// not entered, so a link cannot make the walk loop.
std::vector<FolderEntry> listFolder(const std::string& folderPath) {
    std::vector<FolderEntry> entries;
    DIR* folder = ::opendir(folderPath.c_str());
    if (folder == nullptr) return entries;
    const int folderFd = ::dirfd(folder);
    while (const dirent* item = ::readdir(folder)) {
        const std::string_view name = item->d_name;
        if (isHidden(name)) continue;
        FolderEntry entry;
        entry.name = name;
        unsigned char type = item->d_type;
        if (type == DT_UNKNOWN) {
            struct stat own {};
            if (::fstatat(folderFd, item->d_name, &own, AT_SYMLINK_NOFOLLOW) != 0) continue;
            type = S_ISDIR(own.st_mode) ? DT_DIR : DT_REG;
        }
        if (type == DT_DIR) {
            entry.isFolder = true;
        } else if (hasLogExtension(name)) {
            // A file that vanished since the listing is simply not found.
            if (::fstatat(folderFd, item->d_name, &entry.status, 0) != 0 || !S_ISREG(entry.status.st_mode)) continue;
        } else {
            continue;
        }
        entries.push_back(std::move(entry));
    }
    ::closedir(folder);
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    return entries;
}

class FolderWalk {
public:
    FolderWalk(FileEntries& files, const LogFileReader& reader, const LocalCalendar& calendar, ScanProgress* progress)
        : files_(files), reader_(reader), calendar_(calendar), progress_(progress) {}

    void walk(const std::string& folderPath) {
        for (const FolderEntry& entry : listFolder(folderPath)) {
            std::string path = folderPath;
            if (path.empty() || path.back() != '/') path += '/';
            path += entry.name;
            if (entry.isFolder) {
                walk(path);
            } else {
                if (progress_) progress_->logFilesFound.fetch_add(1, std::memory_order_relaxed);
                visitLog(path, entry);
                if (progress_) progress_->logFilesDone.fetch_add(1, std::memory_order_relaxed);
            }
        }
    }

    DayMap takeDays() { return std::move(days_); }
    const ScanCounters& counters() const { return counters_; }

private:
    void visitLog(const std::string& path, const FolderEntry& entry) {
        const auto size = static_cast<int64_t>(entry.status.st_size);
        const Date modified = modificationDate(entry.status);
        // The state file holds text: a name that is not UTF-8 is known by the
        // text it is saved as, so that the next run finds it again.
        const std::string key = losslessUtf8(path);
        if (const auto stored = files_.find(key);
            stored != files_.end() && stored->second.size == size && stored->second.modified == modified) {
            ++counters_.filesReused;
            mergeDayMap(days_, stored->second.days);
            return;
        }
        const auto file = MappedFile::open(path);
        if (!file) {
            ++counters_.filesUnreadable;
            return;
        }
        const std::string sessionId = validUtf8(std::filesystem::path(entry.name).stem().string());
        FileEntry fresh;
        // What was mapped, not what the listing saw: the entry describes the bytes read.
        fresh.size = file->size();
        fresh.modified = file->modified();
        FileReading reading;
        {
            const TornReadGuard guard(file->bytes().data(), file->bytes().size());
            try {
                reading = reader_(file->bytes());
            } catch (const std::bad_alloc&) {
                // Too big for the memory there is now: read it another time; the other files go on.
                ++counters_.filesUnreadable;
                return;
            }
            if (guard.torn()) {
                // Shortened while being read: what was read is not the file; read it next run.
                ++counters_.filesUnreadable;
                return;
            }
        }
        if (progress_) progress_->bytesRead.fetch_add(fresh.size, std::memory_order_relaxed);
        fresh.days = daysOfFile(std::move(reading), sessionId, calendar_);
        mergeDayMap(days_, fresh.days);
        files_[key] = std::move(fresh);
        ++counters_.filesRead;
    }

    FileEntries& files_;
    const LogFileReader& reader_;
    const LocalCalendar& calendar_;
    ScanProgress* progress_;
    DayMap days_;
    ScanCounters counters_;
};

std::string absoluteFolderText(const std::filesystem::path& folder) {
    std::error_code ignored;
    std::string text = std::filesystem::absolute(folder, ignored).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

}  // namespace

DayMap daysOfFile(FileReading reading, std::string_view sessionId, const LocalCalendar& calendar) {
    DayMap days = daysFromEvents(std::move(reading.events), sessionId, calendar);
    if (reading.quota) keepLaterQuota(days[dayKey(reading.quota->at, calendar)].quota, *reading.quota);
    return days;
}

FolderScan scan(const std::filesystem::path& folder, FileEntries& files, const LogFileReader& reader,
                const LocalCalendar& calendar, ScanProgress* progress) {
    std::error_code code;
    if (!std::filesystem::is_directory(folder, code)) return {};
    FolderWalk walk(files, reader, calendar, progress);
    walk.walk(absoluteFolderText(folder));
    return FolderScan{walk.takeDays(), walk.counters()};
}

}  // namespace tallowen
