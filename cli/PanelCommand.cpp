#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "IcuLocaleFormatter.hpp"
#include "Options.hpp"
#include "PanelData.hpp"
#include "TerminalStyle.hpp"

#include <cstdio>

namespace tallowen::cli {

int runPanelCommand(const std::vector<std::string>& arguments) {
    int exitStatus = 0;
    const auto start = startCommand("panel", arguments, {"--home", "--data"}, {}, exitStatus);
    if (!start) return exitStatus;
    const EngineEnvironment& environment = start->environment;
    std::string error;
    const auto samples = readStoredSamples(environment, error);
    if (!samples) {
        std::fprintf(stderr, "tallowen: panel: %s\n", error.c_str());
        return 1;
    }
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const Date now = environment.clock();
    const MenuModel model =
        terminalMenuModel(*samples, storedImporterState(environment, *samples), now, environment, locale);
    const std::string text = panelText(model, now, locale, TerminalStyle::forStandardOutput().colors());
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
