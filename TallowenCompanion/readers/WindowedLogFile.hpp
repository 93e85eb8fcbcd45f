#pragma once

#include "readers/FileStamp.hpp"
#include "readers/LineRuns.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace tallowen {

// A regular file read in place through a mapped window that slides from its
// start to its end, so that reading a log of any size holds about one window
// of it in memory. Each window is cut after its last line feed and the next
// one starts there; a single line longer than a window is mapped whole.
class WindowedLogFile final : public LineRuns {
public:
    static constexpr size_t defaultWindowBytes = size_t{16} << 20;

    // Nothing when the file cannot be opened or is not a regular file.
    // `windowBytes` is rounded up to whole pages.
    static std::optional<WindowedLogFile> open(const std::filesystem::path& path,
                                               size_t windowBytes = defaultWindowBytes);

    WindowedLogFile(WindowedLogFile&& other) noexcept;
    WindowedLogFile& operator=(WindowedLogFile&& other) noexcept;
    WindowedLogFile(const WindowedLogFile&) = delete;
    WindowedLogFile& operator=(const WindowedLogFile&) = delete;
    ~WindowedLogFile();

    // The version that was opened: only that many bytes are read.
    const FileStamp& stamp() const { return stamp_; }

    // Stops early, and leaves `incomplete()` true, when the file is shortened
    // while it is read or a window cannot be mapped.
    void forEachRun(const std::function<void(std::string_view run)>& onRun) override;
    // Whether the last pass saw less than the whole file.
    bool incomplete() const { return incomplete_; }

private:
    WindowedLogFile(int fd, FileStamp stamp, size_t windowBytes) : fd_(fd), stamp_(stamp), windowBytes_(windowBytes) {}
    // Where the line that starts at `from` ends (past its line feed), looking
    // one window at a time; nothing when a window cannot be read.
    std::optional<uint64_t> endOfLineFrom(uint64_t from);

    int fd_ = -1;
    FileStamp stamp_;
    size_t windowBytes_ = defaultWindowBytes;
    bool incomplete_ = false;
};

}  // namespace tallowen
