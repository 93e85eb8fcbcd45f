#pragma once

#include "PanelRenderer.hpp"
#include "ui/PanelSession.hpp"

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

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
    WatchPanelView(PanelSession& session, std::filesystem::path storeFile, std::FILE* stream, bool isTerminal,
                   bool showsKeyHints);
    ~WatchPanelView();
    WatchPanelView(const WatchPanelView&) = delete;
    WatchPanelView& operator=(const WatchPanelView&) = delete;

    // An import finished (or the view starts): the store is read again.
    void reload(const ImporterState& importer, Date now);
    // The importer published a change within a run: an import began or ended,
    // the duplicate purge moved on.
    void importerChanged(const ImporterState& importer, Date now);
    // Between events: redraws when anything on screen moved.
    void animate(Date now);
    // The screen was given back meanwhile (the process was stopped): the next
    // drawing takes the alternate screen again and draws everything.
    void redrawWhole();
    // Leaves the alternate screen and prints the panel as it last stood, without the key hints.
    void finish(Date now);

private:
    void draw(Date now);

    PanelSession& session_;
    std::filesystem::path storeFile_;
    std::FILE* stream_;
    bool isTerminal_;
    bool showsKeyHints_;
    // Nothing is drawn before the store has been read once.
    bool reloaded_ = false;
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
