#include "ui/MenuModel.hpp"

#include "app/CloudSyncStatus.hpp"
#include "base/CheckedMath.hpp"
#include "model/DayKey.hpp"
#include "summary/OneSamplePerSlot.hpp"
#include "summary/WaterEquivalent.hpp"
#include "ui/MenuFormats.hpp"
#include "ui/QuotaBar.hpp"

#include <algorithm>
#include <cctype>
#include <set>

namespace tallowen {
namespace {

struct Figures {
    int64_t requests = 0;
    int64_t tokens = 0;
    int64_t costCents = 0;

    void add(const UsageSample& sample) {
        addChecked(requests, sample.requests);
        addChecked(tokens, sample.totalTokens());
        addChecked(costCents, sample.estimatedCostCents);
    }
};

// The stored samples of known tools, one per (day, tool) slot.
std::vector<UsageSample> displayedSamples(const std::vector<UsageSample>& samples) {
    std::vector<UsageSample> known;
    known.reserve(samples.size());
    for (const UsageSample& sample : samples)
        if (usageToolFromRawValue(sample.tool)) known.push_back(sample);
    return oneSamplePerSlot(known);
}

void fillToday(MenuModel& model, const std::vector<UsageSample>& samples, const std::string& todayKey,
               const LocaleFormatter& locale) {
    Figures today;
    std::vector<MenuToolRow> rows;
    for (const UsageSample& sample : samples) {
        if (sample.dayKey != todayKey) continue;
        today.add(sample);
        const UsageTool tool = *usageToolFromRawValue(sample.tool);
        rows.push_back(MenuToolRow{tool, std::string(displayLabel(tool)), sample.requests, sample.totalTokens(), ""});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const MenuToolRow& a, const MenuToolRow& b) {
        if (a.label != b.label) return a.label < b.label;
        return static_cast<int>(a.tool) < static_cast<int>(b.tool);
    });
    for (MenuToolRow& row : rows) row.figuresText = std::to_string(row.requests) + " · " + tokenText(row.tokens, locale);

    model.todayRequests = today.requests;
    model.todayRequestsText = requestCountText(today.requests);
    model.todayTokens = today.tokens;
    model.todayTokensText = tokenText(today.tokens, locale);
    model.todayCostCents = today.costCents;
    model.todayCostText = moneyText(today.costCents, locale) + std::string(menu_text::costSuffix);
    model.toolRows = std::move(rows);
}

void fillWeek(MenuModel& model, const std::vector<UsageSample>& samples, Date now, const LocalCalendar& calendar,
              const LocaleFormatter& locale) {
    const auto keys = weekDayKeys(now, calendar);
    const std::set<std::string> week(keys.begin(), keys.end());
    Figures figures;
    for (const UsageSample& sample : samples)
        if (week.count(sample.dayKey)) figures.add(sample);
    model.weekRequests = figures.requests;
    model.weekTokens = figures.tokens;
    model.weekCostCents = figures.costCents;
    model.weekLine = std::to_string(figures.requests) + " recours · " + tokenText(figures.tokens, locale) + " · " +
                     moneyText(figures.costCents, locale);
}

std::vector<MenuQuotaBlock> quotaBlocks(const std::vector<UsageSample>& samples, Date now,
                                        const LocaleFormatter& locale) {
    std::vector<MenuQuotaBlock> blocks;
    for (const MacQuotaBlock& chosen : chooseQuotaBlocks(samples, now)) {
        const QuotaBlockHeader header = quotaBlockHeader(chosen, locale);
        MenuQuotaBlock block{chosen.tool, header.label, header.plan, {}};
        for (const MacQuotaBar& bar : quotaBars(chosen.sample)) {
            block.bars.push_back(MenuQuotaBar{bar.title, bar.percent, quotaBarFillFraction(bar.percent),
                                              quotaPercentText(bar.percent),
                                              quotaColorRole(bar.percent) == QuotaColorRole::warning,
                                              quotaResetText(bar.resetAt, now)});
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

// The computer-side tools that have stored samples, in the tools' order.
std::vector<UsageTool> storedComputerSideTools(const std::vector<UsageSample>& samples) {
    std::set<UsageTool> tools;
    for (const UsageSample& sample : samples)
        if (const auto tool = usageToolFromRawValue(sample.tool); tool && isComputerSide(*tool)) tools.insert(*tool);
    return {tools.begin(), tools.end()};
}

void fillDetectedTools(MenuModel& model, const ImporterState& importer, const std::vector<UsageSample>& samples) {
    model.detectedTools = importer.detectedToolsFromStore ? storedComputerSideTools(samples) : importer.detectedTools;
    std::vector<std::string_view> labels;
    for (const UsageTool tool : model.detectedTools) labels.push_back(displayLabel(tool));
    std::stable_sort(labels.begin(), labels.end());
    model.hasDetectedTools = !labels.empty();
    if (labels.empty()) {
        model.detectedToolsText = std::string(menu_text::noDetectedTools);
        return;
    }
    std::string joined;
    for (size_t i = 0; i < labels.size(); ++i) {
        if (i > 0) joined += " · ";
        joined += labels[i];
    }
    model.detectedToolsText = std::move(joined);
}

void fillCloud(MenuModel& model, const CloudSyncState& sync, Date now, const LocaleFormatter& locale) {
    const std::string since =
        sync.lastSuccessfulSync ? locale.timeAgo(now.secondsSince(*sync.lastSuccessfulSync)) : std::string();
    switch (cloudSyncWarning(sync.isSyncing, sync.lastSuccessfulSync, now)) {
        case CloudSyncWarning::syncing:
            model.cloudWarning = CloudWarningKind::syncing;
            model.cloudWarningText = "Synchro iCloud en cours…";
            model.syncStatusLine = "iCloud · synchro…";
            break;
        case CloudSyncWarning::never:
            model.cloudWarning = CloudWarningKind::never;
            model.cloudWarningText = "Synchro iCloud jamais réussie sur ce Mac.";
            model.syncStatusLine = "iCloud · jamais connecté";
            break;
        case CloudSyncWarning::stale:
            model.cloudWarning = CloudWarningKind::stale;
            model.cloudWarningText = "Synchro iCloud bloquée depuis " + since + ".";
            model.syncStatusLine = "iCloud · bloquée depuis " + since;
            break;
        case CloudSyncWarning::fine:
            model.cloudWarning = CloudWarningKind::none;
            model.syncStatusLine = "iCloud · connecté " + locale.shortTime(*sync.lastSuccessfulSync);
            break;
    }
    model.showsRelaunch = model.cloudWarning == CloudWarningKind::never || model.cloudWarning == CloudWarningKind::stale;
    model.developmentBadge = developmentBadge(sync.cloudEnvironment);
}

}  // namespace

double tokenCounterRatePerSecond(const ConsumptionSummary& summary) {
    if (summary.measuredDays < 1) return 0;
    return static_cast<double>(summary.totalTokens / summary.measuredDays) / tokenCounterSecondsPerDay;
}

std::vector<std::string> weekDayKeys(Date now, const LocalCalendar& calendar) {
    std::vector<std::string> keys;
    for (int back = 0; back < 7; ++back)
        if (const auto day = calendar.startOfDayAdding(now, -back)) keys.push_back(dayKey(*day, calendar));
    return keys;
}

std::optional<std::string> developmentBadge(const std::optional<std::string>& cloudEnvironment) {
    if (!cloudEnvironment) return std::nullopt;
    std::string lower = *cloudEnvironment;
    std::string upper = *cloudEnvironment;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (lower == "production") return std::nullopt;
    return upper.empty() ? std::string("DEVELOPMENT") : upper;
}

MenuModel computeMenuModel(const MenuInputs& inputs) {
    MenuModel model;
    const LocaleFormatter& locale = inputs.locale;
    model.summary = computeConsumptionSummary(inputs.samples, menuSummaryWindowDays, inputs.now,
                                              inputs.calendar);

    model.showsImportIndicator = inputs.importer.isImporting;

    const std::vector<UsageSample> samples = displayedSamples(inputs.samples);
    fillToday(model, samples, dayKey(inputs.now, inputs.calendar), locale);
    model.tokenRatePerSecond = tokenCounterRatePerSecond(model.summary);
    model.todayWaterMilliliters = model.summary.todayWaterMilliliters;
    model.todayWaterText = litresText(model.todayWaterMilliliters, locale);
    model.waterEquivalentText = waterEquivalentText(model.todayWaterMilliliters);
    model.level = bottleLevel(model.summary);
    model.comparisonLine = std::string(waterComparisonLine(model.summary));

    fillWeek(model, samples, inputs.now, inputs.calendar, locale);
    model.quotaBlocks = quotaBlocks(inputs.samples, inputs.now, locale);
    fillDetectedTools(model, inputs.importer, inputs.samples);
    if (inputs.importer.lastError && !inputs.importer.lastError->empty()) model.errorLine = inputs.importer.lastError;
    fillCloud(model, inputs.sync, inputs.now, locale);

    model.importButtonLabel =
        std::string(inputs.importer.isImporting ? menu_text::importButtonImporting : menu_text::importButton);
    model.importButtonEnabled = !inputs.importer.isImporting;
    if (inputs.importer.lastImport) model.lastImportText = "Import " + locale.shortTime(*inputs.importer.lastImport);
    return model;
}

}  // namespace tallowen
