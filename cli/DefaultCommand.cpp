#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "app/SupportFolderImporter.hpp"

#include <cstdio>

namespace tallowen::cli {

int runDefaultCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand(nullptr, arguments, {}, {});
    if (!start) return reported(start.error());
    const EngineEnvironment& environment = start->environment;
    SupportFolderImporter terminal(environment);
    UsageImporter& importer = terminal.importer();
    importer.setLogLine([](const std::string& line) { std::printf("%s\n", line.c_str()); });
    if (importer.runImport().outcome == ImportRunReport::Outcome::droppedOtherProcess)
        std::fputs("tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n",
                   stderr);

    return printPanelOnce(environment, importer.state(), "");
}

}  // namespace tallowen::cli
