#include "ui/StatusLine.hpp"

#include "base/CheckedMath.hpp"
#include "base/JsonWriter.hpp"
#include "model/DayKey.hpp"
#include "model/Iso8601Format.hpp"
#include "summary/LatestQuotas.hpp"
#include "summary/OneSamplePerSlot.hpp"
#include "ui/MenuFormats.hpp"
#include "ui/QuotaBar.hpp"

#include <cmath>

namespace tallowen {

Date statusLineOldestQuotaUpdate(Date now) { return now.addingSeconds(-quotaFreshnessSeconds); }

StatusLineFigures statusLineFigures(const std::vector<UsageSample>& samples, Date now, const LocalCalendar& calendar) {
    StatusLineFigures figures;
    figures.dayKey = dayKey(now, calendar);
    const std::vector<UsageSample> displayed = oneSamplePerSlot(samples);
    for (const UsageSample& sample : displayed) {
        const auto tool = usageToolFromRawValue(sample.tool);
        if (!tool || sample.dayKey != figures.dayKey) continue;
        addChecked(figures.requests, sample.requests);
        addChecked(figures.tokens, sample.totalTokens());
        addChecked(figures.costCents, sample.estimatedCostCents);
        if (isComputerSide(*tool)) addChecked(figures.waterMilliliters, sample.estimatedWaterMilliliters);
    }
    for (const MacQuotaBlock& block : chooseQuotaBlocks(samples, now)) {
        for (const MacQuotaBar& bar : quotaBars(block.sample)) {
            if (!std::isfinite(bar.percent)) continue;
            if (!figures.fullestQuota || bar.percent > figures.fullestQuota->percent)
                figures.fullestQuota = StatusLineQuota{block.tool, bar.title, bar.percent, bar.resetAt};
        }
    }
    return figures;
}

std::string statusLineText(const StatusLineFigures& figures, Date now, const LocaleFormatter& locale) {
    std::string text = std::to_string(figures.requests) + " recours · " + tokenText(figures.tokens, locale) +
                       " tokens · " + litresText(figures.waterMilliliters, locale);
    if (const auto& quota = figures.fullestQuota) {
        text += " · " + std::string(displayLabel(quota->tool)) + " " + quota->windowTitle + " " +
                quotaPercentText(quota->percent);
        if (const auto reset = quotaResetText(quota->resetAt, now)) text += " " + *reset;
    }
    return text;
}

std::string statusLineJson(const StatusLineFigures& figures, Date now, const LocaleFormatter& locale) {
    JsonWriter json;
    json.beginObject();
    json.key("dayKey").string(figures.dayKey);
    json.key("requests").integer(figures.requests);
    json.key("tokens").integer(figures.tokens);
    json.key("waterMilliliters").integer(figures.waterMilliliters);
    json.key("costCents").integer(figures.costCents);
    json.key("fullestQuota");
    if (const auto& quota = figures.fullestQuota) {
        json.beginObject();
        json.key("tool").string(rawValue(quota->tool));
        json.key("window").string(quota->windowTitle);
        json.key("percent").number(quota->percent);
        json.key("resetAt");
        const auto reset = quota->resetAt ? iso8601UtcText(*quota->resetAt) : std::nullopt;
        if (reset) json.string(*reset);
        else json.null();
        json.endObject();
    } else {
        json.null();
    }
    json.key("text").string(statusLineText(figures, now, locale));
    json.endObject();
    return json.take();
}

}  // namespace tallowen
