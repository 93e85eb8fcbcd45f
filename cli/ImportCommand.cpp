#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "ImportProgress.hpp"
#include "TerminalImporter.hpp"

#include "base/JsonWriter.hpp"

#include <cinttypes>
#include <cstdio>
#include <string>

namespace tallowen::cli {
namespace {

// Why a request was dropped.
std::string dropReason(ImportRunReport::Outcome outcome) {
    if (outcome == ImportRunReport::Outcome::droppedOtherProcess)
        return "another tallowen is importing into this data folder";
    return "an import is already under way";
}

std::string jsonReport(const ImportRunReport& report) {
    JsonWriter json;
    json.beginObject();
    json.key("outcome").string(report.dropped() ? "dropped" : "completed");
    if (report.dropped()) json.key("reason").string(dropReason(report.outcome));
    json.key("detectedTools").beginArray();
    for (const UsageTool tool : report.detectedTools) json.string(rawValue(tool));
    json.endArray();
    json.key("samplesInserted").integer(report.samplesInserted);
    json.key("samplesUpdated").integer(report.samplesUpdated);
    json.key("samplesUnchanged").integer(report.samplesUnchanged);
    json.key("duplicatesRemoved").integer(report.duplicatesRemoved);
    json.key("filesRead").integer(report.filesRead);
    json.key("filesReused").integer(report.filesReused);
    json.key("elapsedSeconds").number(report.elapsedSeconds);
    json.key("lastError");
    if (report.lastError) json.string(*report.lastError);
    else json.null();
    json.endObject();
    return json.take() + "\n";
}

std::string textReport(const ImportRunReport& report) {
    if (report.dropped()) return "import dropped: " + dropReason(report.outcome) + "\n";
    std::string text = "detected tools:";
    for (size_t i = 0; i < report.detectedTools.size(); ++i) {
        text += i == 0 ? " " : ", ";
        text += rawValue(report.detectedTools[i]);
    }
    if (report.detectedTools.empty()) text += " none";
    char line[256];
    std::snprintf(line, sizeof line,
                  "\nsamples: %" PRId64 " inserted, %" PRId64 " updated, %" PRId64 " unchanged\n"
                  "duplicates removed: %" PRId64 "\n"
                  "files: %" PRId64 " read, %" PRId64 " reused\n"
                  "elapsed: %.2f s\n",
                  report.samplesInserted, report.samplesUpdated, report.samplesUnchanged, report.duplicatesRemoved,
                  report.filesRead, report.filesReused, report.elapsedSeconds);
    text += line;
    if (report.lastError) text += "lastError: " + *report.lastError + "\n";
    return text;
}

}  // namespace

int runImportCommand(const std::vector<std::string>& arguments) {
    int exitStatus = 0;
    const auto start = startCommand("import", arguments, {"--home", "--data"}, {"--json", "--quiet"}, exitStatus);
    if (!start) return exitStatus;
    const ParsedOptions& options = start->options;
    const EngineEnvironment& environment = start->environment;
    const bool asJson = options.has("--json");
    TerminalImporter terminal(environment);
    // The console line of the purge must not break the JSON on the standard output.
    terminal.importer().setLogLine([asJson](const std::string& line) {
        std::FILE* stream = asJson ? stderr : stdout;
        std::fprintf(stream, "%s\n", line.c_str());
        std::fflush(stream);
    });

    const ImportRunReport report =
        importShowingProgress(terminal.importer(), progressLineWanted(options.has("--quiet")));
    const std::string text = asJson ? jsonReport(report) : textReport(report);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return report.lastError ? 1 : 0;
}

}  // namespace tallowen::cli
