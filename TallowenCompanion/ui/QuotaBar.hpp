#pragma once

#include "model/Date.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"
#include "ui/LocaleFormatter.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// One tool's rate-limit windows in the menu's "QUOTAS" section.
struct MacQuotaBlock {
    UsageTool tool = UsageTool::claudeCode;
    // The sample that carries the quota figures.
    UsageSample sample;
};

// The blocks to show: for each known tool, its quota-carrying sample with
// the latest `updatedAt` (on a tie, the newest day), unless that is older than
// eight days; in the tools' fixed order. Empty: the section is not shown.
std::vector<MacQuotaBlock> chooseQuotaBlocks(const std::vector<UsageSample>& samples, Date now);

struct QuotaBlockHeader {
    std::string label;
    // The plan in upper case; absent when the sample has none or an empty one.
    std::optional<std::string> plan;
};

QuotaBlockHeader quotaBlockHeader(const MacQuotaBlock& block, const LocaleFormatter& locale);

// One window of a block: "5H" for the primary one, "7J" for the secondary.
struct MacQuotaBar {
    std::string title;
    // Percent used, as reported: not clamped.
    double percent = 0;
    std::optional<Date> resetAt;
};

// The bars of a sample, primary first; a window without a percent has none.
std::vector<MacQuotaBar> quotaBars(const UsageSample& sample);

// The filled part of the bar's width, 0 to 1.
double quotaBarFillFraction(double percent);

// The clamped percent rounded to a whole number: "80 %".
std::string quotaPercentText(double percent);

enum class QuotaColorRole { primary, warning };

// From the unrounded percent: 80 and above warn, so 79.6 shows "80 %" in the
// primary colour.
QuotaColorRole quotaColorRole(double percent);

// Time left until the reset: "59 min", "47 h", "2 j"; the day unit starts at
// two days. Absent when there is no reset date or it has passed.
std::optional<std::string> quotaResetLabel(std::optional<Date> resetAt, Date now);

// "reset " followed by the label, when there is one.
std::optional<std::string> quotaResetText(std::optional<Date> resetAt, Date now);

}  // namespace tallowen
