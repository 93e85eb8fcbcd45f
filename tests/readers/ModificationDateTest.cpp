#include "readers/FileStamp.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace tallowen {
namespace {

TEST(ModificationDateTest, AnySecondsFromTheEarliestToTheLatest64BitTime) {
    const struct {
        int64_t seconds;
        long nanoseconds;
        double expected;
    } cases[] = {
        {1741942800, 500000000, 763635600.5},
        {INT64_MIN + 978307200, 0, -9223372036854775808.0},
        {INT64_MIN, 999999999, -9223372036854775808.0 - 978307200.0 + 0.999999999},
        {INT64_MAX, 999999999, 9223372036854775807.0 - 978307200.0 + 0.999999999},
    };
    for (const auto& c : cases) {
        struct stat status {};
#if defined(__APPLE__)
        status.st_mtimespec = {c.seconds, c.nanoseconds};
#else
        status.st_mtim = {c.seconds, c.nanoseconds};
#endif
        EXPECT_EQ(modificationDate(status).secondsSinceReferenceDate, c.expected) << c.seconds;
    }
}

}  // namespace
}  // namespace tallowen
