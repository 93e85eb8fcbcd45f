#include "WatchStatus.hpp"

#include <cinttypes>

namespace tallowen::cli {

std::string watchStatusLine(const UsageImporter& importer, std::time_t now) {
    std::tm local{};
    localtime_r(&now, &local);
    char time[16];
    std::strftime(time, sizeof time, "%H:%M:%S", &local);

    std::string tools;
    for (const UsageTool tool : importer.detectedTools()) {
        if (!tools.empty()) tools += ", ";
        tools += rawValue(tool);
    }
    if (tools.empty()) tools = "no tool";

    const int64_t cents = importer.todayCostCents();
    const uint64_t magnitude = cents < 0 ? 0 - static_cast<uint64_t>(cents) : static_cast<uint64_t>(cents);
    char figures[160];
    std::snprintf(figures, sizeof figures,
                  "today %" PRId64 " sessions, %" PRId64 " tokens, %s$%" PRIu64 ".%02" PRIu64,
                  importer.todaySessions(), importer.todayTokens(), cents < 0 ? "-" : "", magnitude / 100,
                  magnitude % 100);

    std::string line = std::string(time) + "  " + tools + "  " + figures;
    if (importer.lastError()) line += "  error: " + *importer.lastError();
    return line;
}

void WatchStatusView::draw(const UsageImporter& importer, std::time_t now) {
    const std::string line = watchStatusLine(importer, now);
    if (isTerminal_) std::fprintf(stream_, "\r\033[K%s", line.c_str());
    else std::fprintf(stream_, "%s\n", line.c_str());
    std::fflush(stream_);
    drawn_ = true;
}

void WatchStatusView::finish() {
    if (isTerminal_ && drawn_) std::fputc('\n', stream_);
    std::fflush(stream_);
}

}  // namespace tallowen::cli
