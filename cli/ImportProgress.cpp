#include "ImportProgress.hpp"

#include "ui/ImportProgressLine.hpp"

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <unistd.h>

namespace tallowen::cli {
namespace {

// A line on the error output that is rewritten in place.
class ProgressLine {
public:
    explicit ProgressLine(bool enabled) : enabled_(enabled) {}
    ~ProgressLine() { clear(); }

    void show(const std::string& text) {
        if (!enabled_ || text == shown_) return;
        std::fprintf(stderr, "\r\033[K%s", text.c_str());
        std::fflush(stderr);
        shown_ = text;
    }
    void clear() {
        if (shown_.empty()) return;
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        shown_.clear();
    }

private:
    bool enabled_;
    std::string shown_;
};

}  // namespace

bool progressLineWanted(bool quiet) { return !quiet && ::isatty(STDERR_FILENO) == 1; }

ImportRunReport importShowingProgress(UsageImporter& importer, bool showsProgress) {
    ProgressLine progress(showsProgress);
    importer.setObserver([&](ImporterProperty property) {
        if (property != ImporterProperty::purgeProgress || !importer.purgeProgress()) return;
        progress.show("removing duplicates… " + std::to_string(static_cast<int>(*importer.purgeProgress() * 100)) +
                      "%");
    });
    const auto started = importer.startImport();
    if (started != ImportRunReport::Outcome::completed) {
        importer.setObserver(nullptr);
        ImportRunReport dropped;
        dropped.outcome = started;
        return dropped;
    }
    const auto startedAt = std::chrono::steady_clock::now();
    std::optional<ImportRunReport> report;
    while (!(report = importer.finishImportIfReady())) {
        // Short steps: the run is picked up soon after its work is back.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - startedAt;
        if (const ScanProgress* reading = importer.scanProgress())
            if (const auto line = importProgressLine(snapshotOf(*reading), elapsed.count())) progress.show(*line);
    }
    importer.setObserver(nullptr);
    return *report;
}

}  // namespace tallowen::cli
