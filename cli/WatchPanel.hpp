#pragma once

#include "PanelRenderer.hpp"
#include "model/EngineEnvironment.hpp"
#include "import/UsageImporter.hpp"
#include "ui/CountingText.hpp"
#include "IcuLocaleFormatter.hpp"
#include "ui/MenuModel.hpp"
#include "ui/TypewriterTitle.hpp"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <termios.h>

namespace tallowen::cli {

// The panel is drawn on the terminal's alternate screen, cursor hidden; leaving
// gives the user's screen and cursor back.
inline constexpr std::string_view enterAlternateScreen = "\x1b[?1049h\x1b[?25l";
inline constexpr std::string_view leaveAlternateScreen = "\x1b[?25h\x1b[?1049l";

// The panel of `tallowen watch`. On a terminal it is redrawn in place on the
// alternate screen, with the title typed and the token counter climbing
// between imports; elsewhere it is printed once after every import.
class WatchPanelView {
public:
    WatchPanelView(const EngineEnvironment& environment, IcuLocaleFormatter locale, std::FILE* stream, bool isTerminal,
                   bool showsKeyHints, Date started);
    ~WatchPanelView();
    WatchPanelView(const WatchPanelView&) = delete;
    WatchPanelView& operator=(const WatchPanelView&) = delete;

    // An import finished (or the view starts): the store is read again.
    void reload(const UsageImporter& importer, Date now);
    // The importer published a change within a run: an import began or ended,
    // the duplicate purge moved on.
    void importerChanged(const UsageImporter& importer, Date now);
    // Between imports: redraws when the title or the counter moved.
    void animate(Date now);
    // The screen was given back meanwhile (the process was stopped): the next
    // drawing takes the alternate screen again and draws everything.
    void redrawWhole();
    // Leaves the alternate screen and prints the panel as it last stood, without the key hints.
    void finish();

private:
    void recompute(Date now);
    PanelFrame frameAt(Date now) const;
    void draw(Date now);

    const EngineEnvironment& environment_;
    IcuLocaleFormatter locale_;
    std::FILE* stream_;
    bool isTerminal_;
    bool showsKeyHints_;
    Date started_;
    std::vector<TypewriterFrame> timeline_;

    std::vector<UsageSample> samples_;
    std::optional<std::string> storeError_;
    ImporterState importer_;
    MenuModel model_;
    Date modelComputedAt_;
    CountingAnchor counterAnchor_;

    bool onAlternateScreen_ = false;
    std::string lastDrawn_;
};

// The keys of `watch`, read without waiting for Enter: the terminal is put in
// non-canonical, no-echo mode while this object lives, only when standard
// input is a terminal.
class WatchKeys {
public:
    WatchKeys();
    ~WatchKeys();
    WatchKeys(const WatchKeys&) = delete;
    WatchKeys& operator=(const WatchKeys&) = delete;

    bool active() const { return active_; }
    // The terminal's settings from before, to be put back; none when untouched.
    const termios* savedSettings() const { return active_ ? &saved_ : nullptr; }
    // The keys typed since the last call, without waiting; empty when none.
    std::string pending();

private:
    bool active_ = false;
    termios saved_{};
};

}  // namespace tallowen::cli
