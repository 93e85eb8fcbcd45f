#include "CliEnvironment.hpp"
#include "Commands.hpp"
#include "Options.hpp"
#include "app/SupportFolderImporter.hpp"

#include "import/ImportReportJson.hpp"
#include "import/ImportReportText.hpp"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <thread>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// A line on the error output that is rewritten in place; only on a terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool enabled) : enabled_(enabled) {}
    ~ProgressLine() { clear(); }

    void show(const std::string& text) {
        if (!enabled_) return;
        std::fprintf(stderr, "\r\033[K%s", text.c_str());
        std::fflush(stderr);
        shown_ = true;
    }
    void clear() {
        if (!shown_) return;
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        shown_ = false;
    }

private:
    bool enabled_;
    bool shown_ = false;
};

// One run, with a progress line while the logs are read and the purge runs.
ImportRunReport importWithProgress(UsageImporter& importer, ProgressLine& progress) {
    importer.setObserver([&](ImporterProperty property) {
        if (property != ImporterProperty::purgeProgress || !importer.purgeProgress()) return;
        progress.show("removing duplicates… " + std::to_string(static_cast<int>(*importer.purgeProgress() * 100)) +
                      "%");
    });
    const auto started = importer.startImport();
    if (started != ImportRunReport::Outcome::completed) {
        ImportRunReport dropped;
        dropped.outcome = started;
        return dropped;
    }
    const auto startedAt = std::chrono::steady_clock::now();
    for (;;) {
        if (auto report = importer.finishImportIfReady()) return *report;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - startedAt).count();
        if (seconds >= 1 && !importer.purgeProgress())
            progress.show("reading the logs… " + std::to_string(seconds) + " s");
    }
}

}  // namespace

int runImportCommand(const std::vector<std::string>& arguments) {
    const auto start = startCommand("import", arguments, {}, {"--json"});
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

    ImportRunReport report;
    {
        ProgressLine progress(::isatty(STDERR_FILENO) == 1);
        report = importWithProgress(terminal.importer(), progress);
    }
    const std::string text = asJson ? importReportJson(report) + "\n" : importReportText(report);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return report.lastError ? 1 : 0;
}

}  // namespace tallowen::cli
