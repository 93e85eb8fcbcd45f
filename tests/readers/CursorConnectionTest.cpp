#include "readers/CursorConnection.hpp"
#include "readers/CursorReader.hpp"
#include "support/CursorDatabase.hpp"
#include "support/FolderSnapshot.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace tallowen {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;

const std::string conversation(36, 'a');

void writeDatabase(const std::filesystem::path& path, bool wal, long long inputTokens = 10) {
    testing::writeCursorDatabase(path, {{"composerData:" + conversation, testing::cursorCreatedAt(1741950000000)},
                                        {"bubbleId:" + conversation + ":1", testing::cursorTokenCount(inputTokens, 5)}});
    if (!wal) return;
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    sqlite3_exec(database, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    sqlite3_close(database);
}

int64_t inputTokensRead(const std::filesystem::path& path, LockWaitBudget& budget) {
    const auto days = readCursorDatabase(path, LocalCalendar{}, budget);
    if (!days) return -1;
    return days->empty() ? 0 : days->begin()->second.inputTokens;
}

// Cursor's folder is never written to: no journal, log or shared-memory file,
// no changed time, whether the editor left its database in WAL or rollback
// mode and whether we may write there or not (the superuser always may).
TEST(CursorConnectionTest, ReadsWalAndRollbackDatabasesInAFolderNobodyMayWriteToLeavingItAsItWas) {
    for (const bool wal : {true, false}) {
        for (const bool writable : {true, false}) {
            SCOPED_TRACE(std::string(wal ? "WAL" : "rollback") + (writable ? ", writable" : ", read-only"));
            TempDir scratch;
            const auto folder = scratch.path() / "globalStorage";
            writeDatabase(folder / "state.vscdb", wal);
            if (!writable) std::filesystem::permissions(folder, std::filesystem::perms::owner_read |
                                                                    std::filesystem::perms::owner_exec);
            const auto before = testing::folderSnapshot(folder);
            LockWaitBudget budget;
            EXPECT_EQ(inputTokensRead(folder / "state.vscdb", budget), 10);
            EXPECT_EQ(testing::folderSnapshot(folder), before);
        }
    }
}

// While the editor has a WAL database open, what it wrote lies in the log: it is read too.
TEST(CursorConnectionTest, ReadsWhatTheRunningEditorHoldsInItsWriteAheadLog) {
    TempDir scratch;
    const auto path = scratch.path() / "state.vscdb";
    writeDatabase(path, true);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t editor = ::fork();
    if (editor == 0) {
        sqlite3* database = nullptr;
        sqlite3_open(path.c_str(), &database);
        sqlite3_exec(database,
                     "PRAGMA wal_autocheckpoint=0;"
                     "UPDATE cursorDiskKV SET value=json_set(value, '$.tokenCount.inputTokens', 777)"
                     " WHERE key LIKE 'bubbleId:%'",
                     nullptr, nullptr, nullptr);
        (void)!::write(ready[1], "r", 1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    LockWaitBudget budget;
    EXPECT_EQ(inputTokensRead(path, budget), 777);
    ::kill(editor, SIGKILL);
    ::waitpid(editor, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
}

// A lock held by the editor is waited for once per import: both queries draw
// on the same budget, and a lock let go within it is read through.
TEST(CursorConnectionTest, BothQueriesShareOneLockWait) {
    TempDir scratch;
    const auto path = scratch.path() / "state.vscdb";
    writeDatabase(path, false);
    sqlite3* editor = nullptr;
    sqlite3_open(path.c_str(), &editor);
    ASSERT_EQ(sqlite3_exec(editor, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);

    std::chrono::milliseconds slept{0};
    LockWaitBudget heldThroughout(LockWaitBudget::cursorTotal, [&](std::chrono::milliseconds span) { slept += span; });
    EXPECT_EQ(inputTokensRead(path, heldThroughout), 0);
    EXPECT_EQ(slept, 4000ms);
    EXPECT_EQ(heldThroughout.remaining(), 0ms);

    slept = 0ms;
    LockWaitBudget letGo(LockWaitBudget::cursorTotal, [&](std::chrono::milliseconds span) {
        slept += span;
        if (slept >= 2000ms && !sqlite3_get_autocommit(editor)) sqlite3_exec(editor, "COMMIT", nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(inputTokensRead(path, letGo), 10);
    EXPECT_GE(slept, 2000ms);
    EXPECT_LT(slept, 2100ms);
    sqlite3_close(editor);
}

}  // namespace
}  // namespace tallowen
