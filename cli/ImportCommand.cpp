#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "ImportProgress.hpp"
#include "Options.hpp"

#include "app/SupportFolderImporter.hpp"
#include "import/ImportReportJson.hpp"
#include "import/ImportReportText.hpp"

#include <cstdio>
#include <string>

namespace tallowen::cli {

int runImportCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("import", arguments, {}, {"--json", "--quiet"});
    if (!start) return reported(start.error());
    const ParsedOptions& options = start->options;
    const EngineEnvironment& environment = start->environment;
    const bool asJson = options.has("--json");
    SupportFolderImporter terminal(environment);
    // The console line of the purge must not break the JSON on the standard output.
    terminal.importer().setLogLine([asJson](const std::string& line) {
        std::FILE* stream = asJson ? stderr : stdout;
        std::fprintf(stream, "%s\n", line.c_str());
        std::fflush(stream);
    });

    const ImportRunReport report =
        importShowingProgress(terminal.importer(), progressLineWanted(options.has("--quiet")));
    const std::string text = asJson ? importReportJson(report) + "\n" : importReportText(report);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return report.lastError ? 1 : 0;
}

}  // namespace tallowen::cli
