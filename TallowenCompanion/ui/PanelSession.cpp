#include "ui/PanelSession.hpp"

#include "summary/BottleBitmaps.hpp"
#include "ui/CleaningProgress.hpp"
#include "ui/MenuFormats.hpp"

#include <algorithm>
#include <cmath>

namespace tallowen {
namespace {

// Texts that follow the clock (times of day, reset delays, relative times)
// are recomputed this often between events.
constexpr double modelRefreshSeconds = 1.0;

int64_t millisecondsBetween(Date from, Date to) {
    const double milliseconds = std::floor(to.secondsSince(from) * 1000.0);
    return milliseconds > 0 ? static_cast<int64_t>(milliseconds) : 0;
}

// The first instant after `elapsedMilliseconds` at which the typed text or
// the cursor changes, in milliseconds from the start.
int64_t nextTitleChangeMilliseconds(const std::vector<TypewriterFrame>& timeline, int64_t elapsedMilliseconds) {
    const int64_t half = typewriterCursorBlinkMilliseconds / 2;
    int64_t next = (elapsedMilliseconds / half + 1) * half;
    int64_t at = 0;
    for (const TypewriterFrame& step : timeline) {
        at += step.delayMilliseconds;
        if (at > elapsedMilliseconds) {
            next = std::min(next, at);
            break;
        }
    }
    return next;
}

PanelCounter panelCounter(const CountingText& counting, std::string text, bool animates, double transitionSeconds) {
    PanelCounter counter;
    if (const auto parts = splitForRendering(text)) {
        counter.number = parts->number;
        counter.unit = parts->unit;
    } else {
        counter.number = text;
    }
    counter.text = std::move(text);
    counter.animates = animates;
    counter.transitionSeconds = transitionSeconds;
    counter.tickSeconds = counting.tickIntervalSeconds();
    return counter;
}

PanelCleaning cleaningCard(double progress) {
    return PanelCleaning{std::string(menu_text::cleaningTitle), progress, cleaningPercentText(progress),
                         cleaningBarFraction(progress), std::string(menu_text::cleaningNote)};
}

PanelToday todayOf(const MenuModel& model, PanelCounter counter) {
    PanelToday today;
    today.title = menu_text::todayTitle;
    today.requestsText = model.todayRequestsText;
    today.requestsLabel = menu_text::requestsLabel;
    today.tokensLabel = menu_text::tokensLabel;
    today.counter = std::move(counter);
    today.costText = model.todayCostText;
    today.waterTitle = menu_text::waterTitle;
    today.waterText = model.todayWaterText;
    today.equivalentText = model.waterEquivalentText;
    today.comparisonLine = model.comparisonLine;
    today.level = model.level;
    const BottleBitmap& bitmap = bottleBitmap(model.level);
    today.bottleRows.assign(bitmap.begin(), bitmap.end());
    return today;
}

std::optional<PanelQuotas> quotasOf(const MenuModel& model) {
    if (model.quotaBlocks.empty()) return std::nullopt;
    PanelQuotas quotas{std::string(menu_text::quotasTitle), {}};
    for (const MenuQuotaBlock& block : model.quotaBlocks) {
        PanelQuotaBlock shown{block.tool, block.label, block.plan, {}};
        for (const MenuQuotaBar& bar : block.bars)
            shown.bars.push_back(PanelQuotaBar{bar.title, bar.percent, bar.fillFraction, bar.percentText,
                                               bar.warning ? TextRole::warning : TextRole::primary, bar.resetText});
        quotas.blocks.push_back(std::move(shown));
    }
    return quotas;
}

std::optional<PanelCloudWarning> cloudWarningOf(const MenuModel& model) {
    if (model.cloudWarning == CloudWarningKind::none) return std::nullopt;
    // While syncing the line only informs; the other two call for the relaunch.
    const TextRole role = model.cloudWarning == CloudWarningKind::syncing ? TextRole::secondary : TextRole::warning;
    return PanelCloudWarning{model.cloudWarning, model.cloudWarningText, model.showsRelaunch,
                             std::string(menu_text::relaunchButton), role};
}

}  // namespace

PanelSession::PanelSession(const LocaleFormatter& formatter, const LocalCalendar& calendar, PanelOptions options,
                           Date started)
    : formatter_(formatter), calendar_(calendar), options_(options), started_(started),
      timeline_(typewriterTimeline()) {}

void PanelSession::samplesReloaded(std::vector<UsageSample> samples) {
    samples_ = std::move(samples);
    storeError_.reset();
    modelStale_ = true;
}

void PanelSession::storeFailed(std::string errorText) {
    storeError_ = std::move(errorText);
    modelStale_ = true;
}

void PanelSession::importerChanged(const ImporterState& state) {
    importer_ = state;
    modelStale_ = true;
}

void PanelSession::syncChanged(const CloudSyncState& state) {
    sync_ = state;
    modelStale_ = true;
}

void PanelSession::loginItemChanged(bool enabled) { loginItemEnabled_ = enabled; }

PanelFrame PanelSession::frame(Date now) {
    const int64_t elapsed = millisecondsBetween(started_, now);
    RoledText title{typewriterShownText(typewriterTextAt(timeline_, elapsed), typewriterCursorVisibleAt(elapsed)),
                    TextRole::primary};
    // The cleaning view shows nothing of the figures: they wait for the purge.
    if (importer_.purgeProgress) return frameWith(std::move(title), {}, now);

    refreshModel(now);
    const CountingText counting = counter();
    bool animates = true;
    double transitionSeconds = counting.transitionSeconds();
    if (!anchor_.initialised) {
        anchor_.appear(model_.todayTokens, now);
        animates = false;
    } else if (static_cast<double>(model_.todayTokens) != anchor_.value) {
        animates = anchor_.valueChanged(model_.todayTokens, now);
        transitionSeconds = countingValueChangeAnimationSeconds;
    }
    return frameWith(std::move(title),
                     panelCounter(counting, counting.textAt(anchor_, now, formatter_), animates, transitionSeconds),
                     now);
}

PanelFrame PanelSession::frameAtRest(Date now) {
    RoledText title{typewriterShownText(typewriterWordmark, true), TextRole::primary};
    if (importer_.purgeProgress) return frameWith(std::move(title), {}, now);
    refreshModel(now);
    const CountingText counting = counter();
    CountingAnchor anchor;
    anchor.appear(model_.todayTokens, now);
    return frameWith(std::move(title), panelCounter(counting, counting.textAt(anchor, now, formatter_), false, 0), now);
}

Date PanelSession::nextFrameDate(Date now) const {
    const int64_t elapsed = millisecondsBetween(started_, now);
    double next = std::max(started_.addingSeconds(static_cast<double>(nextTitleChangeMilliseconds(timeline_, elapsed)) /
                                                  1000.0)
                               .secondsSinceReferenceDate,
                           now.secondsSinceReferenceDate);
    if (importer_.purgeProgress) return Date{next};
    if (modelStale_ || !modelComputedAt_ || !anchor_.initialised || now < *modelComputedAt_) return now;
    next = std::min(next, modelComputedAt_->addingSeconds(modelRefreshSeconds).secondsSinceReferenceDate);

    const CountingText counting = counter();
    if (counting.ratePerSecond > 0) {
        // The shown number moves when the simulated count reaches its next step.
        const auto step = static_cast<double>(counting.step());
        const double reached = (std::trunc(counting.rawValueAt(anchor_, now) / step) + 1) * step;
        const double secondsFromAnchor = std::max((reached - anchor_.value) / counting.ratePerSecond, 0.0);
        next = std::min(next, anchor_.date.addingSeconds(secondsFromAnchor).secondsSinceReferenceDate);
    }
    return Date{std::max(next, now.secondsSinceReferenceDate)};
}

void PanelSession::refreshModel(Date now) {
    if (!modelStale_ && modelComputedAt_ && now >= *modelComputedAt_ &&
        now.secondsSince(*modelComputedAt_) < modelRefreshSeconds)
        return;
    ImporterState state = importer_;
    if (storeError_ && !state.lastError) state.lastError = storeError_;
    model_ = computeMenuModel(MenuInputs{samples_, state, sync_, now, calendar_, formatter_});
    modelComputedAt_ = now;
    modelStale_ = false;
}

CountingText PanelSession::counter() const {
    const LocaleFormatter& formatter = formatter_;
    return CountingText{model_.todayTokens, [&formatter](int64_t n) { return tokenText(n, formatter); },
                        model_.tokenRatePerSecond};
}

PanelFrame PanelSession::frameWith(RoledText title, PanelCounter counter, Date now) const {
    PanelFrame frame;
    if (importer_.purgeProgress) frame.cleaning = cleaningCard(*importer_.purgeProgress);
    frame.title = std::move(title);
    frame.showsImportIndicator = !frame.cleaning && model_.showsImportIndicator;
    frame.today = todayOf(model_, std::move(counter));
    for (const MenuToolRow& row : model_.toolRows) frame.toolRows.push_back({row.tool, row.label, row.figuresText});
    frame.week = PanelWeek{std::string(menu_text::weekTitle), model_.weekLine};
    frame.quotas = quotasOf(model_);
    frame.detectedTools = PanelDetectedTools{std::string(menu_text::detectedToolsTitle), model_.detectedToolsText,
                                             model_.hasDetectedTools ? TextRole::primary : TextRole::dimmed};
    frame.errorLine = model_.errorLine;
    if (options_.showsCloudLines) frame.cloudWarning = cloudWarningOf(model_);
    if (options_.showsLoginItem) frame.loginItem = PanelLoginItem{std::string(menu_text::loginItemLabel), loginItemEnabled_};
    if (options_.hasUpdater) frame.updateButton = PanelUpdateButton{std::string(menu_text::updateButton)};

    PanelFooter& footer = frame.footer;
    footer.importLabel = model_.importButtonLabel;
    footer.importEnabled = model_.importButtonEnabled;
    footer.importRole = model_.importButtonEnabled ? TextRole::primary : TextRole::disabled;
    footer.syncLabel = menu_text::syncButton;
    footer.quitLabel = menu_text::quitButton;
    footer.lastImportText = model_.lastImportText;
    if (options_.showsCloudLines) {
        footer.syncStatusLine = model_.syncStatusLine;
        footer.developmentBadge = model_.developmentBadge;
    }
    footer.developmentBadgeHelp = menu_text::developmentBadgeHelp;
    frame.nextFrameSeconds = nextFrameDate(now).secondsSince(now);
    return frame;
}

}  // namespace tallowen
