#include "base/CsvText.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(CsvTextTest, QuotesOnlyFieldsThatNeedIt) {
    EXPECT_EQ(csvRecord({"2025-03-14", "codex", "12", ""}), "2025-03-14,codex,12,\n");
    EXPECT_EQ(csvRecord({"a,b", "say \"hi\"", "two\nlines", "cr\r"}), "\"a,b\",\"say \"\"hi\"\"\",\"two\nlines\",\"cr\r\"\n");
    EXPECT_EQ(csvRecord({}), "\n");
}

}  // namespace
}  // namespace tallowen
