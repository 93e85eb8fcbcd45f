#include "base/SupportFolderLock.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <optional>

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

TEST(SupportFolderLockTest, AFolderWhereNoLockFileCanBeMadeIsUnavailableNotBusy) {
    TempDir dir;
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path() / "missing").status(), Status::unavailable);
}

}  // namespace
}  // namespace tallowen
