#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "TerminalImporter.hpp"

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
    importer.setLogLine([](const std::string& line) { std::printf("%s\n", line.c_str()); });
    if (importer.runImport().outcome == ImportRunReport::Outcome::droppedOtherProcess)
        std::fputs("tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n",
                   stderr);

    return printPanelOnce(*environment, importer.state(), "");
}

}  // namespace tallowen::cli
