#pragma once

#include <filesystem>

namespace tallowen {

// An exclusive, non-blocking lock on the support folder ("import.lock" in it),
// held by a process while it imports so that two processes never import into
// the same folder at once. The lock goes with the object, or with the process.
class SupportFolderLock {
public:
    static constexpr const char* fileName = "import.lock";

    enum class Status {
        acquired,
        // Another holder has the lock: the import is to be dropped.
        busy,
        // The lock file cannot be opened or locked (a read-only folder, say);
        // nobody can hold the lock, so the caller may go on without it.
        unavailable,
    };

    static SupportFolderLock tryAcquire(const std::filesystem::path& supportFolder);

    SupportFolderLock(SupportFolderLock&& other) noexcept;
    SupportFolderLock& operator=(SupportFolderLock&& other) noexcept;
    SupportFolderLock(const SupportFolderLock&) = delete;
    SupportFolderLock& operator=(const SupportFolderLock&) = delete;
    ~SupportFolderLock();

    Status status() const { return status_; }
    bool acquired() const { return status_ == Status::acquired; }

private:
    SupportFolderLock(int fd, Status status) : fd_(fd), status_(status) {}
    void release();

    int fd_ = -1;
    Status status_ = Status::unavailable;
};

}  // namespace tallowen
