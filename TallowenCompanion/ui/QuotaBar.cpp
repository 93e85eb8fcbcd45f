#include "ui/QuotaBar.hpp"

#include "summary/LatestQuotas.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace tallowen {
namespace {

constexpr double warningPercent = 80.0;

// A percent that is not a number draws like an empty window.
double clampedPercent(double percent) {
    if (std::isnan(percent)) return 0;
    return std::clamp(percent, 0.0, 100.0);
}

std::string withUnit(double count, const char* unit) {
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%lld%s", static_cast<long long>(count), unit);
    return buffer;
}

}  // namespace

std::vector<MacQuotaBlock> chooseQuotaBlocks(const std::vector<UsageSample>& samples, Date now) {
    std::vector<MacQuotaBlock> blocks;
    for (ToolQuota& quota : latestFreshQuotas(samples, now)) blocks.push_back(MacQuotaBlock{quota.tool, std::move(quota.sample)});
    return blocks;
}

QuotaBlockHeader quotaBlockHeader(const MacQuotaBlock& block, const LocaleFormatter& locale) {
    QuotaBlockHeader header{std::string(displayLabel(block.tool)), std::nullopt};
    if (block.sample.quotaPlan && !block.sample.quotaPlan->empty()) header.plan = locale.upperCased(*block.sample.quotaPlan);
    return header;
}

std::vector<MacQuotaBar> quotaBars(const UsageSample& sample) {
    std::vector<MacQuotaBar> bars;
    if (sample.quotaPrimaryPercent) bars.push_back(MacQuotaBar{"5H", *sample.quotaPrimaryPercent, sample.quotaPrimaryResetAt});
    if (sample.quotaSecondaryPercent)
        bars.push_back(MacQuotaBar{"7J", *sample.quotaSecondaryPercent, sample.quotaSecondaryResetAt});
    return bars;
}

double quotaBarFillFraction(double percent) { return clampedPercent(percent) / 100.0; }

std::string quotaPercentText(double percent) { return withUnit(std::round(clampedPercent(percent)), " %"); }

QuotaColorRole quotaColorRole(double percent) {
    return percent >= warningPercent ? QuotaColorRole::warning : QuotaColorRole::primary;
}

std::optional<std::string> quotaResetLabel(std::optional<Date> resetAt, Date now) {
    if (!resetAt) return std::nullopt;
    const double secondsLeft = resetAt->secondsSince(now);
    if (!(secondsLeft > 0)) return std::nullopt;
    // A reset date far beyond any real window still gets a finite label.
    const double minutes = std::min(std::trunc(secondsLeft / 60.0), 9.0e18);
    if (minutes < 60) return withUnit(minutes, " min");
    if (minutes <= 2879) return withUnit(std::trunc(minutes / 60.0), " h");
    return withUnit(std::trunc(minutes / 1440.0), " j");
}

std::optional<std::string> quotaResetText(std::optional<Date> resetAt, Date now) {
    std::optional<std::string> label = quotaResetLabel(resetAt, now);
    if (!label) return std::nullopt;
    return "reset " + *label;
}

}  // namespace tallowen
