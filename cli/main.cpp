#include "Commands.hpp"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* usageText =
    "usage: tallowen [COMMAND] [OPTIONS]\n"
    "\n"
    "  (none)    import, then draw the panel once\n"
    "  scan      read the logs and print the per-day figures (--json)\n"
    "  import    one import into the store (--json)\n"
    "  days      the stored per-day records (--since DAY --until DAY --tool RAW --json)\n"
    "  watch     import every 15 seconds and redraw the panel\n"
    "  panel     draw the panel from the store, without importing\n"
    "  summary   the panel's figures and texts as JSON (--json)\n"
    "\n"
    "common options: --home DIR (default $HOME), --data DIR (the data folder)\n";

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty() || arguments.front().rfind("--", 0) == 0) {
        if (!arguments.empty() && (arguments.front() == "--help")) {
            std::fputs(usageText, stdout);
            return 0;
        }
        return tallowen::cli::runDefaultCommand(arguments);
    }
    const std::string command = arguments.front();
    arguments.erase(arguments.begin());
    if (command == "scan") return tallowen::cli::runScanCommand(arguments);
    if (command == "import") return tallowen::cli::runImportCommand(arguments);
    if (command == "days") return tallowen::cli::runDaysCommand(arguments);
    if (command == "watch") return tallowen::cli::runWatchCommand(arguments);
    if (command == "panel") return tallowen::cli::runPanelCommand(arguments);
    if (command == "summary") return tallowen::cli::runSummaryCommand(arguments);
    if (command == "help" || command == "-h") {
        std::fputs(usageText, stdout);
        return 0;
    }
    std::fprintf(stderr, "tallowen: unknown command: %s (see tallowen --help)\n", command.c_str());
    return 2;
}
