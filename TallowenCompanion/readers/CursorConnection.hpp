#pragma once

#include "base/SqliteConnection.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>

namespace tallowen {

// How long the reads of Cursor's database may wait for the editor's locks,
// all queries of one import together: a wait spends what the earlier ones left.
class LockWaitBudget {
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    static constexpr std::chrono::milliseconds cursorTotal{4000};

    explicit LockWaitBudget(std::chrono::milliseconds total = cursorTotal, Sleep sleep = {});

    // One wait before SQLite tries the lock again; false, without waiting,
    // once the budget is spent.
    bool waitOnce(int attempt);
    std::chrono::milliseconds remaining() const { return remaining_; }

private:
    std::chrono::milliseconds remaining_;
    Sleep sleep_;
};

// Cursor's state database opened for reading so that nothing is ever created
// or changed in its folder, and its lock waits drawn from `budget`, which
// must outlive the connection. Nothing when it cannot be opened.
//
// While the editor has the database open in WAL mode, its "-wal" and "-shm"
// files are there and are read through as any reader does. Without them a
// WAL database is idle, and is read as it lies (immutable), since even a
// read-only open would create both files. A database in rollback mode is read
// with shared locks, which write nothing.
std::optional<SqliteConnection> openCursorDatabase(const std::filesystem::path& path, LockWaitBudget& budget);

}  // namespace tallowen
