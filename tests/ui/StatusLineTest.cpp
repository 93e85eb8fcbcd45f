#include "IcuLocaleFormatter.hpp"
#include "support/Dates.hpp"
#include "support/SampleBuilder.hpp"
#include "support/ScopedTimeZone.hpp"
#include "ui/StatusLine.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

using testing::SampleBuilder;

TEST(StatusLineTest, TodaysFiguresAndTheFullestFreshQuota) {
    testing::ScopedTimeZone paris("Europe/Paris");
    const Date now = testing::localDate(2025, 3, 14, 10);
    const IcuLocaleFormatter french("fr_FR");
    UsageSample codex = SampleBuilder("2025-03-14", "codex").tokens(200000, 6090).water(400).cost(1234)
                            .primaryQuota(40).secondaryQuota(88).updatedAt(now);
    codex.requests = 7;
    codex.quotaSecondaryResetAt = now.addingSeconds(3 * 3600 + 60);
    UsageSample older = codex;
    older.updatedAt = now.addingSeconds(-60);
    older.requests = 1000;  // the same slot, written before: it does not count
    const std::vector<UsageSample> samples = {
        codex, older,
        SampleBuilder("2025-03-14", "phone-claude").tokens(4000).water(5000),  // counted, but no water
        SampleBuilder("2025-03-13", "claude-code").tokens(1).primaryQuota(87.9).updatedAt(now),
        SampleBuilder("2025-03-14", "cursor").secondaryQuota(88).updatedAt(now),  // as full, but later in order
        SampleBuilder("2025-03-01", "mac-chatgpt").primaryQuota(99).updatedAt(now.addingSeconds(-691201))};  // stale
    const StatusLineFigures figures = statusLineFigures(samples, now, LocalCalendar{});
    EXPECT_EQ(statusLineJson(figures, now, french),
              R"({"dayKey":"2025-03-14","requests":7,"tokens":210090,"waterMilliliters":400,"costCents":1234,)"
              R"("fullestQuota":{"tool":"codex","window":"7J","percent":88,"resetAt":"2025-03-14T12:01:00Z"},)"
              R"("text":"7 recours · 210 k tokens · 0,4 L · CODEX 7J 88 % reset 3 h"})");
    EXPECT_EQ(statusLineOldestQuotaUpdate(now), now.addingSeconds(-691200));
    const std::string none = statusLineJson(statusLineFigures({}, now, LocalCalendar{}), now, french);
    EXPECT_NE(none.find(R"("fullestQuota":null,"text":"0 recours · 0 tokens · 0,0 L")"), std::string::npos) << none;
}

}  // namespace
}  // namespace tallowen
