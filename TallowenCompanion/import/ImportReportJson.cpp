#include "import/ImportReportJson.hpp"

#include "base/JsonWriter.hpp"

namespace tallowen {

std::string_view dropReason(ImportRunReport::Outcome outcome) {
    if (outcome == ImportRunReport::Outcome::droppedOtherProcess)
        return "another tallowen is importing into this data folder";
    return "an import is already under way";
}

std::string importReportJson(const ImportRunReport& report) {
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
    return json.take();
}

}  // namespace tallowen
