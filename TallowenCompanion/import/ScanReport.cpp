#include "import/ScanReport.hpp"

#include "base/JsonWriter.hpp"
#include "import/DaySample.hpp"
#include "model/DaySamplesJson.hpp"
#include "model/DayTable.hpp"

#include <cinttypes>
#include <cstdio>

namespace tallowen {
namespace {

std::string percentText(const std::optional<double>& percent) {
    if (!percent) return "-";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.0f%%", *percent);
    return buffer;
}

std::string quotaText(const UsageSample& sample) {
    if (!sample.quotaPrimaryPercent && !sample.quotaSecondaryPercent && !sample.quotaPlan) return "";
    std::string text = percentText(sample.quotaPrimaryPercent) + " / " + percentText(sample.quotaSecondaryPercent);
    if (sample.quotaPlan) text += " " + *sample.quotaPlan;
    return text;
}

}  // namespace

std::string scanReportText(const LogReadOutcome& outcome) {
    std::string text = "detected:";
    for (const UsageTool tool : outcome.detected) {
        text += ' ';
        text += rawValue(tool);
    }
    if (outcome.detected.empty()) text += " none";
    text += "\n\n";
    text += dayTableLine("day", "tool", 11, {"sessions", "requests", "input", "output", "cost $", "water ml"}, "quota");
    for (const UsageSample& sample : samplesOfResults(outcome.results)) text += dayTableLine(sample, 11, quotaText(sample));
    char line[128];
    std::snprintf(line, sizeof line, "\nfiles read: %" PRId64 ", reused: %" PRId64, outcome.counters.filesRead,
                  outcome.counters.filesReused);
    text += line;
    if (outcome.counters.filesUnreadable > 0) {
        std::snprintf(line, sizeof line, ", unreadable: %" PRId64, outcome.counters.filesUnreadable);
        text += line;
    }
    text += '\n';
    return text;
}

std::string scanReportJson(const LogReadOutcome& outcome) {
    JsonWriter json;
    json.beginObject();
    json.key("detected").beginArray();
    for (const UsageTool tool : outcome.detected) json.string(rawValue(tool));
    json.endArray();
    json.key("samples").beginArray();
    for (const UsageSample& sample : samplesOfResults(outcome.results)) writeDaySampleJson(json, sample, false);
    json.endArray();
    json.endObject();
    return json.take();
}

}  // namespace tallowen
