#include "WatchPanel.hpp"

#include "PanelData.hpp"
#include "TerminalStyle.hpp"
#include "ui/CleaningProgress.hpp"

#include <cmath>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// A model holds times of day and reset delays: it is recomputed this often between imports.
constexpr double modelRefreshSeconds = 1.0;

int64_t millisecondsBetween(Date from, Date to) {
    const double milliseconds = std::floor(to.secondsSince(from) * 1000.0);
    return milliseconds > 0 ? static_cast<int64_t>(milliseconds) : 0;
}

}  // namespace

WatchPanelView::WatchPanelView(const EngineEnvironment& environment, IcuLocaleFormatter locale, std::FILE* stream,
                               bool isTerminal, bool showsKeyHints, Date started)
    : environment_(environment),
      locale_(std::move(locale)),
      stream_(stream),
      isTerminal_(isTerminal),
      showsKeyHints_(showsKeyHints),
      started_(started),
      timeline_(typewriterTimeline()) {}

WatchPanelView::~WatchPanelView() {
    if (onAlternateScreen_) {
        std::fwrite(leaveAlternateScreen.data(), 1, leaveAlternateScreen.size(), stream_);
        std::fflush(stream_);
    }
}

void WatchPanelView::reload(const UsageImporter& importer, Date now) {
    std::string error;
    if (auto samples = readStoredSamples(environment_, error)) {
        samples_ = std::move(*samples);
        storeError_.reset();
    } else {
        storeError_ = error;
    }
    importer_ = importerState(importer);
    recompute(now);
    if (!counterAnchor_.initialised) counterAnchor_.appear(model_.todayTokens, now);
    else if (static_cast<double>(model_.todayTokens) != counterAnchor_.value) counterAnchor_.valueChanged(model_.todayTokens, now);
    if (isTerminal_) {
        draw(now);
    } else if (!importer_.isImporting) {
        // One panel per import, with the title at rest and the counter on the true value.
        std::fputs((panelText(model_, now, locale_, false) + "\n").c_str(), stream_);
        std::fflush(stream_);
    }
}

void WatchPanelView::importerChanged(const UsageImporter& importer, Date now) {
    // Nothing is drawn before the store has been read once.
    if (!isTerminal_ || !counterAnchor_.initialised) return;
    const ImporterState changed = importerState(importer);
    const bool purgeOnly = changed.purgeProgress && importer_.purgeProgress;
    importer_ = changed;
    if (purgeOnly) {
        // The purge reports often: only the cleaning view moves.
        model_.cleaning = MenuCleaningView{*changed.purgeProgress, cleaningPercentText(*changed.purgeProgress),
                                           cleaningBarFraction(*changed.purgeProgress)};
    } else {
        recompute(now);
    }
    draw(now);
}

void WatchPanelView::animate(Date now) {
    if (!isTerminal_ || !counterAnchor_.initialised) return;
    if (now.secondsSince(modelComputedAt_) >= modelRefreshSeconds || now < modelComputedAt_) recompute(now);
    draw(now);
}

void WatchPanelView::redrawWhole() {
    onAlternateScreen_ = false;
    lastDrawn_.clear();
}

void WatchPanelView::finish() {
    if (!isTerminal_) return;
    // The keys no longer work once `watch` has ended.
    showsKeyHints_ = false;
    if (onAlternateScreen_) {
        std::fwrite(leaveAlternateScreen.data(), 1, leaveAlternateScreen.size(), stream_);
        onAlternateScreen_ = false;
    }
    if (!lastDrawn_.empty()) {
        const Date now = environment_.clock();
        const std::string text = joinedLines(renderPanel(model_, frameAt(now), TerminalStyle::forStandardOutput()));
        std::fputs(text.c_str(), stream_);
    }
    std::fflush(stream_);
}

void WatchPanelView::recompute(Date now) {
    ImporterState state = importer_;
    if (storeError_ && !state.lastError) state.lastError = storeError_;
    model_ = terminalMenuModel(samples_, state, now, environment_, locale_);
    modelComputedAt_ = now;
}

PanelFrame WatchPanelView::frameAt(Date now) const {
    const int64_t elapsed = millisecondsBetween(started_, now);
    PanelFrame frame;
    frame.title = typewriterShownText(typewriterTextAt(timeline_, elapsed), typewriterCursorVisibleAt(elapsed));
    const CountingText counter = menuTokenCounter(model_, locale_);
    frame.tokenCounter = counter.textAt(counterAnchor_, now, locale_);
    frame.showsKeyHints = showsKeyHints_;
    return frame;
}

void WatchPanelView::draw(Date now) {
    const auto lines = renderPanel(model_, frameAt(now), TerminalStyle::forStandardOutput());
    std::string text;
    for (const std::string& line : lines) text += line + "\x1b[K\n";
    if (text == lastDrawn_) return;
    lastDrawn_ = text;
    if (!onAlternateScreen_) {
        std::fwrite(enterAlternateScreen.data(), 1, enterAlternateScreen.size(), stream_);
        onAlternateScreen_ = true;
    }
    // Home, the lines each clearing what a longer one left, then clear below.
    std::fputs(("\x1b[H" + text + "\x1b[J").c_str(), stream_);
    std::fflush(stream_);
}

WatchKeys::WatchKeys() {
    if (::isatty(STDIN_FILENO) != 1 || tcgetattr(STDIN_FILENO, &saved_) != 0) return;
    termios raw = saved_;
    raw.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO));
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    active_ = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
}

WatchKeys::~WatchKeys() {
    if (active_) tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
}

std::string WatchKeys::pending() {
    if (!active_) return {};
    char buffer[32];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    return count > 0 ? std::string(buffer, static_cast<size_t>(count)) : std::string();
}

}  // namespace tallowen::cli
