#include "WatchPanel.hpp"

#include "TerminalStyle.hpp"
#include "store/SqliteSampleStore.hpp"

#include <unistd.h>

namespace tallowen::cli {

WatchPanelView::WatchPanelView(PanelSession& session, std::filesystem::path storeFile, std::FILE* stream,
                               bool isTerminal, bool showsKeyHints)
    : session_(session),
      storeFile_(std::move(storeFile)),
      stream_(stream),
      isTerminal_(isTerminal),
      showsKeyHints_(showsKeyHints) {}

WatchPanelView::~WatchPanelView() {
    if (onAlternateScreen_) {
        std::fwrite(leaveAlternateScreen.data(), 1, leaveAlternateScreen.size(), stream_);
        std::fflush(stream_);
    }
}

void WatchPanelView::reload(const ImporterState& importer, Date now) {
    if (auto samples = readStoredSamples(storeFile_)) session_.samplesReloaded(std::move(*samples));
    else session_.storeFailed(samples.error());
    session_.importerChanged(importer);
    reloaded_ = true;
    if (isTerminal_) {
        draw(now);
    } else if (!importer.isImporting) {
        // One panel per import, with the title at rest and the counter on the true value.
        const std::string text = joinedLines(renderPanel(session_.frameAtRest(now), false, TerminalStyle(false)));
        std::fputs((text + "\n").c_str(), stream_);
        std::fflush(stream_);
    }
}

void WatchPanelView::importerChanged(const ImporterState& importer, Date now) {
    if (!isTerminal_ || !reloaded_) return;
    session_.importerChanged(importer);
    draw(now);
}

void WatchPanelView::animate(Date now) {
    if (isTerminal_ && reloaded_) draw(now);
}

void WatchPanelView::redrawWhole() {
    onAlternateScreen_ = false;
    lastDrawn_.clear();
}

void WatchPanelView::finish(Date now) {
    if (!isTerminal_) return;
    if (onAlternateScreen_) {
        std::fwrite(leaveAlternateScreen.data(), 1, leaveAlternateScreen.size(), stream_);
        onAlternateScreen_ = false;
    }
    // The keys no longer work once `watch` has ended.
    if (!lastDrawn_.empty())
        std::fputs(joinedLines(renderPanel(session_.frame(now), false, TerminalStyle::forStandardOutput())).c_str(),
                   stream_);
    std::fflush(stream_);
}

void WatchPanelView::draw(Date now) {
    const auto lines = renderPanel(session_.frame(now), showsKeyHints_, TerminalStyle::forStandardOutput());
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
