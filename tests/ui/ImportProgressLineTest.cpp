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
        {{3, 1, 9000000, false}, 0.49, nullptr},
        {{1286, 120, 312000000, false}, 0.5, "reading logs 120/1286 · 312 MB · 624 MB/s"},
        {{10, 10, 0, true}, 2, "reading logs 10/10 · 0 MB · 0 MB/s · Cursor database"},
    };
    for (const auto& c : cases) {
        const auto line = importProgressLine(c.snapshot, c.seconds);
        EXPECT_EQ(line.value_or("none"), c.line ? c.line : "none");
    }
    ScanProgress progress;
    progress.bytesRead = 5;
    progress.readingCursor = true;
    EXPECT_EQ(snapshotOf(progress).bytesRead, 5);
    EXPECT_TRUE(snapshotOf(progress).readingCursor);
}

}  // namespace
}  // namespace tallowen
