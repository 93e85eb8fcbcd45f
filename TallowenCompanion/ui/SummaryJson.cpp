#include "ui/SummaryJson.hpp"

#include "base/JsonWriter.hpp"
#include "model/DaySamplesJson.hpp"
#include "model/Iso8601Format.hpp"

namespace tallowen {
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
        writeDaySampleJson(json, quota.sample, true);
        json.endObject();
    }
    json.endArray();
    json.key("hasClaudeCodeWithoutQuota").boolean(summary.hasClaudeCodeWithoutQuota);
    json.key("hasMacData").boolean(summary.hasMacData);
    json.endObject();
}

void writeMenu(JsonWriter& json, const MenuModel& model, const SummaryContext& context) {
    json.beginObject();
    json.key("todayTitle").string(menu_text::todayTitle);
    json.key("todayRequests").integer(model.todayRequests);
    json.key("todayRequestsText").string(model.todayRequestsText);
    json.key("todayTokens").integer(model.todayTokens);
    json.key("todayTokensText").string(model.todayTokensText);
    json.key("tokenCounterText").string(context.tokenCounterText);
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
    for (const UsageTool tool : model.detectedTools) json.string(rawValue(tool));
    json.endArray();
    json.key("detectedToolsText").string(model.detectedToolsText);
    optionalDate(json, "lastImport", context.lastImport);
    optionalText(json, "lastImportText", model.lastImportText);
    json.endObject();
}

}  // namespace

std::string summaryJson(const MenuModel& model, const SummaryContext& context) {
    JsonWriter json;
    json.beginObject();
    optionalDate(json, "now", context.now);
    json.key("dayKey").string(context.dayKey);
    json.key("locale").string(context.localeName);
    json.key("windowDays").integer(menuSummaryWindowDays);
    json.key("summary");
    writeSummary(json, model.summary);
    json.key("level").string(levelName(model.level));
    json.key("levelRawValue").integer(rawValue(model.level));
    json.key("comparisonLine").string(comparisonLine(model.level));
    json.key("menu");
    writeMenu(json, model, context);
    json.endObject();
    return json.take();
}

}  // namespace tallowen
