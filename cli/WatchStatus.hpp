#pragma once

#include "import/UsageImporter.hpp"

#include <cstdio>
#include <ctime>
#include <string>

namespace tallowen::cli {

// The one-line status that `tallowen watch` redraws after every import: the
// local time, the detected tools, today's sessions, tokens and cost, and the
// last error when there is one.
std::string watchStatusLine(const UsageImporter& importer, std::time_t now);

// Draws the status: rewritten in place on a terminal, one line per import elsewhere.
class WatchStatusView {
public:
    WatchStatusView(std::FILE* stream, bool isTerminal) : stream_(stream), isTerminal_(isTerminal) {}
    void draw(const UsageImporter& importer, std::time_t now);
    // Ends the drawing so that the shell's prompt starts on a line of its own.
    void finish();

private:
    std::FILE* stream_;
    bool isTerminal_;
    bool drawn_ = false;
};

}  // namespace tallowen::cli
