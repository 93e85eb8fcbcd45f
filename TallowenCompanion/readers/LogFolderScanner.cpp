#include "readers/LogFolderScanner.hpp"

#include "model/DayKey.hpp"
#include "base/Utf8Text.hpp"
#include "model/DaysFromEvents.hpp"

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

// A log file found by the walk, and what became of it.
struct LogFile {
    size_t folder = 0;
    std::string path;
    std::string key;
    std::string sessionId;
    FileStamp listed;
    enum class Outcome { reused, read, unreadable } outcome = Outcome::reused;
    // The renewed entry of a file read.
    FileEntry fresh;
};

void walkFolder(size_t folderIndex, const std::string& folderPath, std::vector<LogFile>& found) {
    for (const FolderEntry& entry : listFolder(folderPath)) {
        std::string path = folderPath;
        if (path.empty() || path.back() != '/') path += '/';
        path += entry.name;
        if (entry.isFolder) {
            walkFolder(folderIndex, path, found);
            continue;
        }
        LogFile file;
        file.folder = folderIndex;
        // The state file holds text: a name that is not UTF-8 is known by the
        // text it is saved as, so that the next run finds it again.
        file.key = losslessUtf8(path);
        file.sessionId = validUtf8(std::filesystem::path(entry.name).stem().string());
        file.path = std::move(path);
        file.listed = fileStamp(entry.status);
        found.push_back(std::move(file));
    }
}

std::string absoluteFolderText(const std::filesystem::path& folder) {
    std::error_code ignored;
    std::string text = std::filesystem::absolute(folder, ignored).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

// Counts the bytes handed to the reader, for the progress shown meanwhile.
class CountedRuns final : public LineRuns {
public:
    CountedRuns(LineRuns& inner, ScanProgress* progress) : inner_(inner), progress_(progress) {}
    void forEachRun(const std::function<void(std::string_view run)>& onRun) override {
        inner_.forEachRun([&](std::string_view run) {
            onRun(run);
            if (progress_) progress_->bytesRead.fetch_add(static_cast<int64_t>(run.size()), std::memory_order_relaxed);
        });
    }

private:
    LineRuns& inner_;
    ScanProgress* progress_;
};

void readLogFile(LogFile& file, const LogFileReader& reader, const LocalCalendar& calendar,
                 const ScanSettings& settings) {
    auto opened = WindowedLogFile::open(file.path, settings.windowBytes);
    if (!opened) {
        file.outcome = LogFile::Outcome::unreadable;
        return;
    }
    CountedRuns lines(*opened, settings.progress);
    FileReading reading;
    try {
        reading = reader(lines);
    } catch (const std::bad_alloc&) {
        // Too big for the memory there is now: read it another time; the other files go on.
        file.outcome = LogFile::Outcome::unreadable;
        return;
    }
    if (opened->incomplete()) {
        // Shortened while being read: what was read is not the file; read it next run.
        file.outcome = LogFile::Outcome::unreadable;
        return;
    }
    // What was opened, not what the listing saw: the entry describes the bytes read.
    file.fresh.size = opened->stamp().size;
    file.fresh.modified = opened->stamp().modified;
    file.fresh.days = daysOfFile(std::move(reading), file.sessionId, calendar);
    file.outcome = LogFile::Outcome::read;
}

}  // namespace

DayMap daysOfFile(FileReading reading, std::string_view sessionId, const LocalCalendar& calendar) {
    DayMap days = daysFromEvents(std::move(reading.events), sessionId, calendar);
    if (reading.quota) keepLaterQuota(days[dayKey(reading.quota->at, calendar)].quota, *reading.quota);
    return days;
}

std::vector<FolderScan> scanFolders(const std::vector<LogFolder>& folders, FileEntries& files,
                                    const LocalCalendar& calendar, const ScanSettings& settings) {
    std::vector<FolderScan> scans(folders.size());
    std::vector<LogFile> found;
    for (size_t index = 0; index < folders.size(); ++index) {
        std::error_code code;
        if (!std::filesystem::is_directory(folders[index].path, code)) continue;
        scans[index].days.emplace();
        walkFolder(index, absoluteFolderText(folders[index].path), found);
    }

    // Change detection before any reading, so the number of files to read is known up front.
    std::vector<size_t> toRead;
    for (size_t index = 0; index < found.size(); ++index) {
        const auto stored = files.find(found[index].key);
        const bool unchanged = stored != files.end() && stored->second.size == found[index].listed.size &&
                               stored->second.modified == found[index].listed.modified;
        if (!unchanged) toRead.push_back(index);
    }
    if (ScanProgress* progress = settings.progress) {
        progress->logFilesFound.fetch_add(static_cast<int64_t>(found.size()), std::memory_order_relaxed);
        progress->logFilesDone.fetch_add(static_cast<int64_t>(found.size() - toRead.size()),
                                         std::memory_order_relaxed);
    }

    // The largest files are claimed first, so that one long log does not keep
    // a thread busy after the others have run out of work.
    std::stable_sort(toRead.begin(), toRead.end(),
                     [&](size_t a, size_t b) { return found[a].listed.size > found[b].listed.size; });
    const unsigned threads = std::max(1u, settings.workerThreads);
    // Per thread, one reader per folder, made when the thread first needs it.
    std::vector<std::vector<LogFileReader>> readers(threads, std::vector<LogFileReader>(folders.size()));
    forEachItemOnThreads(toRead.size(), threads, [&](size_t item, unsigned thread) {
        LogFile& file = found[toRead[item]];
        LogFileReader& reader = readers[thread][file.folder];
        if (!reader) reader = folders[file.folder].makeReader();
        readLogFile(file, reader, calendar, settings);
        if (settings.progress) settings.progress->logFilesDone.fetch_add(1, std::memory_order_relaxed);
    });

    // Summed in the order of the walk, whatever order the files were read in.
    for (LogFile& file : found) {
        FolderScan& folderScan = scans[file.folder];
        switch (file.outcome) {
            case LogFile::Outcome::reused:
                ++folderScan.counters.filesReused;
                mergeDayMap(*folderScan.days, files.at(file.key).days);
                break;
            case LogFile::Outcome::read:
                ++folderScan.counters.filesRead;
                mergeDayMap(*folderScan.days, file.fresh.days);
                files[file.key] = std::move(file.fresh);
                break;
            case LogFile::Outcome::unreadable:
                ++folderScan.counters.filesUnreadable;
                break;
        }
    }
    return scans;
}

FolderScan scan(const std::filesystem::path& folder, FileEntries& files, const LogReaderMaker& makeReader,
                const LocalCalendar& calendar, const ScanSettings& settings) {
    return std::move(scanFolders({LogFolder{folder, makeReader}}, files, calendar, settings).front());
}

}  // namespace tallowen
