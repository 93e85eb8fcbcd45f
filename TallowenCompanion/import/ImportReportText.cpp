#include "import/ImportReportText.hpp"

#include "import/ImportReportJson.hpp"

#include <cinttypes>
#include <cstdio>

namespace tallowen {

std::string importReportText(const ImportRunReport& report) {
    if (report.dropped()) return "import dropped: " + std::string(dropReason(report.outcome)) + "\n";
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

}  // namespace tallowen
