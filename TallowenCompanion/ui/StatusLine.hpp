#pragma once

#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"
#include "ui/LocaleFormatter.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// The fullest rate-limit window among the quotas the panel shows.
struct StatusLineQuota {
    UsageTool tool = UsageTool::claudeCode;
    std::string windowTitle;  // "5H", "7J"
    double percent = 0;
    std::optional<Date> resetAt;
};

// Today's figures as the panel counts them: requests and tokens of every known
// tool, water of the computer's own tools, and the fullest fresh quota.
struct StatusLineFigures {
    std::string dayKey;
    int64_t requests = 0;
    int64_t tokens = 0;
    int64_t waterMilliliters = 0;
    int64_t costCents = 0;
    std::optional<StatusLineQuota> fullestQuota;
};

// Everything the figures need from a store: the samples of days from today's
// key on, and the samples carrying a quota updated at or after this instant.
Date statusLineOldestQuotaUpdate(Date now);

// From stored samples (duplicates allowed). The fullest quota is the window
// with the highest percent; on a tie the first in the tools' order, the
// primary window before the secondary one.
StatusLineFigures statusLineFigures(const std::vector<UsageSample>& samples, Date now, const LocalCalendar& calendar);

// One short line: "7 recours · 206 k tokens · 0,4 L · CODEX 7J 88 % reset 1 h";
// the quota part only when there is one, its reset only when still ahead.
std::string statusLineText(const StatusLineFigures& figures, Date now, const LocaleFormatter& locale);

// The figures and the line as one JSON object; dates in ISO 8601, UTC.
std::string statusLineJson(const StatusLineFigures& figures, Date now, const LocaleFormatter& locale);

}  // namespace tallowen
