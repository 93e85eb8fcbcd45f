#include "readers/FileStamp.hpp"
#include "readers/Iso8601.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace tallowen {
namespace {

TEST(Iso8601Test, AcceptedFormsGiveSecondsSince2001AndEverythingElseIsRefused) {
    // Counted by hand: 2025-01-31T09:15:02Z is 8796 days and 33302 seconds after 2001-01-01T00:00:00Z.
    const std::pair<std::string, double> accepted[] = {
        {"2025-01-31T09:15:02Z", 760007702.0}, {"2025-01-31T09:15:02.123Z", 760007702.0 + 0.123},
        {"2025-01-31T09:15:02.000000001Z", 760007702.0 + 1e-9}, {"2025-01-31T10:15:02+01:00", 760007702.0},
        {"2025-01-31T10:15:02+0100", 760007702.0}, {"2025-01-31T04:45:02-04:30", 760007702.0},
        {"2000-12-31T23:00:00-01:00", 0.0}, {"1970-01-01T00:00:00Z", -978307200.0},
        {"2024-02-29T23:59:59Z", 730943999.0}, {"2000-02-29T12:00:00Z", -26481600.0},
        {"1600-03-01T00:00:00Z", -12649219200.0}, {"9999-12-31T23:59:59Z", 252423993599.0},
    };
    for (const auto& [text, seconds] : accepted) EXPECT_EQ(parseIso8601Timestamp(text), Date{seconds}) << text;
    const char* const refused[] = {
        "", "2025-01-31 09:15:02", "2025-01-31T09:15:02", "2025-01-31T09:15:02.123", "2025-01-31T09:15:02.Z",
        "2025-01-31T09:15:02,5Z", "2025-01-31T09:15:02Zjunk", "2025-01-31T09:15:02Z ", " 2025-01-31T09:15:02Z",
        "2025-01-31T09:15:02+01", "2025-01-31T09:15:02+1:00", "2025-01-31T09:15:02+24:00", "2025-01-31T09:15:02+01:60",
        "2025-01-31T09:15:02+01:00:00", "2025-1-31T09:15:02Z", "2025-00-10T09:15:02Z", "2025-13-10T09:15:02Z",
        "2025-01-00T09:15:02Z", "2025-02-29T09:15:02Z", "1900-02-29T09:15:02Z", "2025-04-31T09:15:02Z",
        "2025-01-31T24:00:00Z", "2025-01-31T09:60:02Z", "2025-01-31T09:15:60Z", "2025-01-31T09:15Z",
        "2025-01-31t09:15:02Z",
    };
    for (const char* text : refused) EXPECT_FALSE(parseIso8601Timestamp(text)) << '"' << text << '"';
}

TEST(ModificationDateTest, AnySecondsFromTheEarliestToTheLatest64BitTime) {
    const std::tuple<int64_t, long, double> cases[] = {
        {1741942800, 500000000, 763635600.5}, {INT64_MIN + 978307200, 0, -9223372036854775808.0},
        {INT64_MIN, 999999999, -9223372036854775808.0 - 978307200.0 + 0.999999999},
        {INT64_MAX, 999999999, 9223372036854775807.0 - 978307200.0 + 0.999999999},
    };
    for (const auto& [seconds, nanoseconds, expected] : cases) {
        struct stat status {};
#if defined(__APPLE__)
        status.st_mtimespec = {seconds, nanoseconds};
#else
        status.st_mtim = {seconds, nanoseconds};
#endif
        EXPECT_EQ(modificationDate(status), Date{expected}) << seconds;
    }
}

}  // namespace
}  // namespace tallowen
