#include "base/SupportFolderLock.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <optional>

namespace tallowen {
namespace {

using Status = SupportFolderLock::Status;

TEST(SupportFolderLockTest, OneHolderPerFolderUntilReleasedAndAFolderWithoutALockFileIsUnavailable) {
    testing::TempDir dir;
    std::optional<SupportFolderLock> first = SupportFolderLock::tryAcquire(dir.path());
    EXPECT_EQ(first->status(), Status::acquired);
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path()).status(), Status::busy);
    first.reset();
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path()).status(), Status::acquired);
    EXPECT_EQ(SupportFolderLock::tryAcquire(dir.path() / "missing").status(), Status::unavailable);
}

}  // namespace
}  // namespace tallowen
