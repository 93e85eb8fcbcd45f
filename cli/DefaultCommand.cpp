#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "IcuLocaleFormatter.hpp"
#include "Options.hpp"
#include "PanelData.hpp"
#include "TerminalImporter.hpp"
#include "TerminalStyle.hpp"

#include <cstdio>

namespace tallowen::cli {

int runDefaultCommand(const std::vector<std::string>& arguments) {
    std::string error;
    const auto options = parseOptions(arguments, {"--home", "--data"}, {}, error);
    if (!options) {
        std::fprintf(stderr, "tallowen: %s (see tallowen --help)\n", error.c_str());
        return 2;
    }
    const auto environment = environmentFromOptions(*options, error);
    if (!environment) {
        std::fprintf(stderr, "tallowen: %s\n", error.c_str());
        return 1;
    }

    TerminalImporter terminal(*environment);
    UsageImporter& importer = terminal.importer();
    const ImportRunReport report = importer.runImport();
    if (report.outcome == ImportRunReport::Outcome::droppedOtherProcess)
        std::fputs("tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n",
                   stderr);

    const auto samples = readStoredSamples(*environment, error);
    if (!samples) {
        std::fprintf(stderr, "tallowen: %s\n", error.c_str());
        return 1;
    }
    const IcuLocaleFormatter locale = IcuLocaleFormatter::forProcess();
    const Date now = environment->clock();
    ImporterState state = importerState(importer);
    if (report.dropped()) state.detectedTools = storedImporterState(*environment, *samples).detectedTools;
    const MenuModel model = terminalMenuModel(*samples, state, now, *environment, locale);
    const std::string text = panelText(model, now, locale, TerminalStyle::forStandardOutput().colors());
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace tallowen::cli
