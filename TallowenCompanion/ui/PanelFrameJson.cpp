#include "ui/PanelFrameJson.hpp"

#include "base/JsonWriter.hpp"

namespace tallowen {
namespace {

void optionalText(JsonWriter& json, std::string_view key, const std::optional<std::string>& text) {
    json.key(key);
    if (text) json.string(*text);
    else json.null();
}

void roledText(JsonWriter& json, std::string_view key, const RoledText& text) {
    json.key(key).beginObject();
    json.key("text").string(text.text);
    json.key("role").string(textRoleName(text.role));
    json.endObject();
}

std::string_view cloudWarningKindName(CloudWarningKind kind) {
    switch (kind) {
        case CloudWarningKind::syncing: return "syncing";
        case CloudWarningKind::never: return "never";
        case CloudWarningKind::stale: return "stale";
        case CloudWarningKind::none: break;
    }
    return "none";
}

void cleaning(JsonWriter& json, const std::optional<PanelCleaning>& card) {
    json.key("cleaning");
    if (!card) {
        json.null();
        return;
    }
    json.beginObject();
    json.key("title").string(card->title);
    json.key("progress").number(card->progress);
    json.key("percentText").string(card->percentText);
    json.key("barFraction").number(card->barFraction);
    json.key("note").string(card->note);
    json.endObject();
}

void today(JsonWriter& json, const PanelToday& today) {
    json.key("today").beginObject();
    json.key("title").string(today.title);
    json.key("requestsText").string(today.requestsText);
    json.key("requestsLabel").string(today.requestsLabel);
    json.key("tokensLabel").string(today.tokensLabel);
    const PanelCounter& counter = today.counter;
    json.key("counter").beginObject();
    json.key("text").string(counter.text);
    json.key("number").string(counter.number);
    optionalText(json, "unit", counter.unit);
    json.key("animates").boolean(counter.animates);
    json.key("transitionSeconds").number(counter.transitionSeconds);
    json.key("tickSeconds").number(counter.tickSeconds);
    json.endObject();
    json.key("costText").string(today.costText);
    json.key("waterTitle").string(today.waterTitle);
    json.key("waterText").string(today.waterText);
    json.key("equivalentText").string(today.equivalentText);
    json.key("comparisonLine").string(today.comparisonLine);
    json.key("level").integer(rawValue(today.level));
    json.key("bottleRows").beginArray();
    for (const std::string& row : today.bottleRows) json.string(row);
    json.endArray();
    json.endObject();
}

void quotas(JsonWriter& json, const std::optional<PanelQuotas>& quotas) {
    json.key("quotas");
    if (!quotas) {
        json.null();
        return;
    }
    json.beginObject();
    json.key("title").string(quotas->title);
    json.key("blocks").beginArray();
    for (const PanelQuotaBlock& block : quotas->blocks) {
        json.beginObject();
        json.key("tool").string(rawValue(block.tool));
        json.key("label").string(block.label);
        optionalText(json, "plan", block.plan);
        json.key("bars").beginArray();
        for (const PanelQuotaBar& bar : block.bars) {
            json.beginObject();
            json.key("title").string(bar.title);
            json.key("fillFraction").number(bar.fillFraction);
            json.key("percentText").string(bar.percentText);
            json.key("role").string(textRoleName(bar.role));
            optionalText(json, "resetText", bar.resetText);
            json.endObject();
        }
        json.endArray();
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

void cloudWarning(JsonWriter& json, const std::optional<PanelCloudWarning>& warning) {
    json.key("cloudWarning");
    if (!warning) {
        json.null();
        return;
    }
    json.beginObject();
    json.key("kind").string(cloudWarningKindName(warning->kind));
    json.key("text").string(warning->text);
    json.key("showsRelaunch").boolean(warning->showsRelaunch);
    json.key("relaunchLabel").string(warning->relaunchLabel);
    json.key("role").string(textRoleName(warning->role));
    json.endObject();
}

void footer(JsonWriter& json, const PanelFooter& footer) {
    json.key("footer").beginObject();
    json.key("importLabel").string(footer.importLabel);
    json.key("importEnabled").boolean(footer.importEnabled);
    json.key("importRole").string(textRoleName(footer.importRole));
    json.key("syncLabel").string(footer.syncLabel);
    json.key("quitLabel").string(footer.quitLabel);
    optionalText(json, "lastImportText", footer.lastImportText);
    optionalText(json, "syncStatusLine", footer.syncStatusLine);
    optionalText(json, "developmentBadge", footer.developmentBadge);
    json.key("developmentBadgeHelp").string(footer.developmentBadgeHelp);
    json.endObject();
}

}  // namespace

std::string_view textRoleName(TextRole role) {
    switch (role) {
        case TextRole::primary: return "primary";
        case TextRole::secondary: return "secondary";
        case TextRole::accent: return "accent";
        case TextRole::warning: return "warning";
        case TextRole::dimmed: return "dimmed";
        case TextRole::disabled: return "disabled";
    }
    return "primary";
}

std::string panelFrameJson(const PanelFrame& frame) {
    JsonWriter json;
    json.beginObject();
    cleaning(json, frame.cleaning);
    roledText(json, "title", frame.title);
    json.key("showsImportIndicator").boolean(frame.showsImportIndicator);
    today(json, frame.today);
    json.key("toolRows").beginArray();
    for (const PanelToolRow& row : frame.toolRows) {
        json.beginObject();
        json.key("tool").string(rawValue(row.tool));
        json.key("label").string(row.label);
        json.key("figuresText").string(row.figuresText);
        json.endObject();
    }
    json.endArray();
    json.key("week").beginObject();
    json.key("title").string(frame.week.title);
    json.key("line").string(frame.week.line);
    json.endObject();
    quotas(json, frame.quotas);
    json.key("detectedTools").beginObject();
    json.key("title").string(frame.detectedTools.title);
    json.key("text").string(frame.detectedTools.text);
    json.key("role").string(textRoleName(frame.detectedTools.role));
    json.endObject();
    optionalText(json, "errorLine", frame.errorLine);
    cloudWarning(json, frame.cloudWarning);
    json.key("loginItem");
    if (frame.loginItem) {
        json.beginObject();
        json.key("label").string(frame.loginItem->label);
        json.key("isOn").boolean(frame.loginItem->isOn);
        json.endObject();
    } else {
        json.null();
    }
    json.key("updateButton");
    if (frame.updateButton) {
        json.beginObject();
        json.key("label").string(frame.updateButton->label);
        json.endObject();
    } else {
        json.null();
    }
    footer(json, frame.footer);
    json.key("nextFrameSeconds").number(frame.nextFrameSeconds);
    json.endObject();
    return json.take();
}

}  // namespace tallowen
