#include "app/SupportFolderLock.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::TempDir;
using Status = SupportFolderLock::Status;

TEST(SupportFolderLockTest, OneHolderPerFolderUntilReleased) {
    TempDir dir;
    TempDir other;
    std::optional<SupportFolderLock> first = SupportFolderLock::tryAcquire(dir.path());
    EXPECT_EQ(first->status(), Status::acquired);
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path()).status(), Status::busy);
    EXPECT_EQ(SupportFolderLock::tryAcquire(other.path()).status(), Status::acquired);
    first.reset();
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path()).status(), Status::acquired);
}

TEST(SupportFolderLockTest, AnotherProcessCannotTakeAHeldLock) {
    TempDir dir;
    const SupportFolderLock held = SupportFolderLock::tryAcquire(dir.path());
    ASSERT_TRUE(held.acquired());
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The child inherits nothing that holds the lock once it opens the file anew.
        _exit(SupportFolderLock::tryAcquire(dir.path()).status() == Status::busy ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(SupportFolderLockTest, AFolderWhereNoLockFileCanBeMadeIsUnavailableNotBusy) {
    TempDir dir;
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path() / "missing").status(), Status::unavailable);
}

}  // namespace
}  // namespace tallowen
