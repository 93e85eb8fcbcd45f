#pragma once

#include "model/UsageEvent.hpp"

#include <memory>
#include <string_view>
#include <vector>

namespace tallowen {

// Turns the bytes of one Claude Code session log into priced events, one per
// assistant reply that carries usage. Bad lines are dropped without a word.
// Keep one reader per thread: it reuses its parser's buffers between lines.
class ClaudeCodeReader {
public:
    ClaudeCodeReader();
    ~ClaudeCodeReader();

    void parseFile(std::string_view bytes, std::vector<UsageEvent>& events);
    void parseLine(std::string_view line, std::vector<UsageEvent>& events);

private:
    struct Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace tallowen
