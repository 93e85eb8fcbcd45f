#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "IcuLocaleFormatter.hpp"
#include "Options.hpp"
#include "PanelData.hpp"
#include "PanelRenderer.hpp"
#include "SampleJson.hpp"

#include "model/DayKey.hpp"
#include "model/Iso8601Format.hpp"
#include "base/JsonWriter.hpp"

#include <cstdio>

namespace tallowen::cli {
namespace {

void optionalDate(JsonWriter& json, std::string_view key, std::optional<Date> date) {
    json.key(key);
    const auto text = date ? iso8601UtcText(*date) : std::nullopt;
    if (text) json.string(*text);
    else json.null();
}

void optionalText(JsonWriter& json, std::string_view key, const std::optional<std::string>& text) {
    json.key(key);
    if (text) json.string(*text);
    else json.null();
}

std::string_view levelName(BottleLevel level) {
    switch (level) {
        case BottleLevel::empty: return "empty";
        case BottleLevel::low: return "low";
        case BottleLevel::medium: return "medium";
        case BottleLevel::full: return "full";
        case BottleLevel::overflow: return "overflow";
    }
    return "";
}

void writeSummary(JsonWriter& json, const ConsumptionSummary& summary) {
    json.beginObject();
    json.key("totalTokens").integer(summary.totalTokens);
    json.key("totalCostCents").integer(summary.totalCostCents);
    json.key("measuredDays").integer(summary.measuredDays);
    json.key("totalWaterMilliliters").integer(summary.totalWaterMilliliters);
    json.key("allTimeWaterMilliliters").integer(summary.allTimeWaterMilliliters);
    optionalDate(json, "reliableSince", summary.reliableSince);
    json.key("todayWaterMilliliters").integer(summary.todayWaterMilliliters);
    json.key("previousWindowWaterMilliliters").integer(summary.previousWindowWaterMilliliters);
    json.key("dayReferenceMilliliters").integer(summary.dayReferenceMilliliters);
    json.key("quotas").beginArray();
    for (const ToolQuota& quota : summary.quotas) {
        json.beginObject();
        json.key("tool").string(rawValue(quota.tool));
        json.key("sample");
        writeSampleJson(json, quota.sample, true);
        json.endObject();
    }
    json.endArray();
    json.key("hasClaudeCodeWithoutQuota").boolean(summary.hasClaudeCodeWithoutQuota);
    json.key("hasMacData").boolean(summary.hasMacData);
    json.endObject();
}

void writeMenu(JsonWriter& json, const MenuModel& model, const ImporterState& importer, const std::string& counter) {
    json.beginObject();
    json.key("todayTitle").string(menu_text::todayTitle);
    json.key("todayRequests").integer(model.todayRequests);
    json.key("todayRequestsText").string(model.todayRequestsText);
    json.key("todayTokens").integer(model.todayTokens);
    json.key("todayTokensText").string(model.todayTokensText);
    json.key("tokenCounterText").string(counter);
    json.key("tokenRatePerSecond").number(model.tokenRatePerSecond);
    json.key("todayCostCents").integer(model.todayCostCents);
    json.key("todayCostText").string(model.todayCostText);
    json.key("waterTitle").string(menu_text::waterTitle);
    json.key("todayWaterMilliliters").integer(model.todayWaterMilliliters);
    json.key("todayWaterText").string(model.todayWaterText);
    json.key("waterEquivalentText").string(model.waterEquivalentText);
    json.key("comparisonLine").string(model.comparisonLine);
    json.key("toolRows").beginArray();
    for (const MenuToolRow& row : model.toolRows) {
        json.beginObject();
        json.key("tool").string(rawValue(row.tool));
        json.key("label").string(row.label);
        json.key("requests").integer(row.requests);
        json.key("tokens").integer(row.tokens);
        json.key("text").string(row.figuresText);
        json.endObject();
    }
    json.endArray();
    json.key("weekTitle").string(menu_text::weekTitle);
    json.key("weekRequests").integer(model.weekRequests);
    json.key("weekTokens").integer(model.weekTokens);
    json.key("weekCostCents").integer(model.weekCostCents);
    json.key("weekLine").string(model.weekLine);
    json.key("quotaBlocks").beginArray();
    for (const MenuQuotaBlock& block : model.quotaBlocks) {
        json.beginObject();
        json.key("tool").string(rawValue(block.tool));
        json.key("label").string(block.label);
        optionalText(json, "plan", block.plan);
        json.key("bars").beginArray();
        for (const MenuQuotaBar& bar : block.bars) {
            json.beginObject();
            json.key("title").string(bar.title);
            json.key("percent").number(bar.percent);
            json.key("percentText").string(bar.percentText);
            json.key("warning").boolean(bar.warning);
            optionalText(json, "resetText", bar.resetText);
            json.endObject();
        }
        json.endArray();
        json.endObject();
    }
    json.endArray();
    json.key("detectedToolsTitle").string(menu_text::detectedToolsTitle);
    json.key("detectedTools").beginArray();
    for (const UsageTool tool : importer.detectedTools) json.string(rawValue(tool));
    json.endArray();
    json.key("detectedToolsText").string(model.detectedToolsText);
    optionalDate(json, "lastImport", importer.lastImport);
    optionalText(json, "lastImportText", model.lastImportText);
    json.endObject();
}

}  // namespace

int runSummaryCommand(const std::vector<std::string>& arguments) {
    int exitStatus = 0;
    const auto start = startCommand("summary", arguments, {"--home", "--data"}, {"--json"}, exitStatus);
    if (!start) return exitStatus;
    const EngineEnvironment& environment = start->environment;
    std::string error;
    const auto samples = readStoredSamples(environment, error);
    if (!samples) {
        std::fprintf(stderr, "tallowen: summary: %s\n", error.c_str());
        return 1;
    }
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const Date now = environment.clock();
    const ImporterState importer = storedImporterState(environment, *samples);
    const MenuModel model = terminalMenuModel(*samples, importer, now, environment, locale);
    const CountingText counter = menuTokenCounter(model, locale);
    CountingAnchor anchor;
    anchor.appear(counter.value, now);

    JsonWriter json;
    json.beginObject();
    optionalDate(json, "now", now);
    json.key("dayKey").string(dayKey(now, environment.calendar));
    json.key("locale").string(locale.localeName());
    json.key("windowDays").integer(menuSummaryWindowDays);
    json.key("summary");
    writeSummary(json, model.summary);
    json.key("level").string(levelName(model.level));
    json.key("levelRawValue").integer(rawValue(model.level));
    json.key("comparisonLine").string(comparisonLine(model.level));
    json.key("menu");
    writeMenu(json, model, importer, counter.textAt(anchor, now, locale));
    json.endObject();
    const std::string text = json.take() + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
