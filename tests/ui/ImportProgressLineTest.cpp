#include "ui/ImportProgressLine.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(ImportProgressLineTest, ShownAfterHalfASecondOfReading) {
    const struct {
        ImportProgressSnapshot snapshot;
        double seconds;
        const char* line;
    } cases[] = {
        {{3, 1, 9000000, false}, 0.49, "none"},
        {{1286, 120, 312000000, false}, 0.5, "reading logs 120/1286 · 312 MB · 624 MB/s"},
        {{10, 10, 0, true}, 2, "reading logs 10/10 · 0 MB · 0 MB/s · Cursor database"},
    };
    for (const auto& c : cases) EXPECT_EQ(importProgressLine(c.snapshot, c.seconds).value_or("none"), c.line);
}

}  // namespace
}  // namespace tallowen
