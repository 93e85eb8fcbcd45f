#pragma once

#include "model/DayUsage.hpp"
#include "model/UsageEvent.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// What reading one Codex log builds up, line after line.
struct CodexFileState {
    // The model named by the last thread-settings record so far.
    std::optional<std::string> model;
    std::vector<UsageEvent> events;
    // The rate-limit snapshot with the latest timestamp so far.
    std::optional<QuotaSnapshot> quota;
};

// Turns the bytes of one Codex session log into priced events, one per
// token-count record, and keeps the latest rate-limit snapshot.
class CodexReader {
public:
    CodexReader();
    ~CodexReader();

    void parseFile(std::string_view bytes, CodexFileState& state);
    void parseLine(std::string_view line, CodexFileState& state);

private:
    struct Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace tallowen
