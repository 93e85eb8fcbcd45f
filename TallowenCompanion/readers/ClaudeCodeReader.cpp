#include "readers/ClaudeCodeReader.hpp"

#include "base/CheckedMath.hpp"
#include "base/JsonRead.hpp"
#include "readers/ByteSearch.hpp"
#include "readers/Iso8601.hpp"
#include "readers/LineJsonParser.hpp"
#include "readers/LineSplitter.hpp"
#include "readers/ModelPricing.hpp"

namespace tallowen {
namespace {

// No assistant line with usage is shorter; shorter lines are not even searched.
constexpr size_t shortestCandidateLineBytes = 41;
// Exactly as Claude Code writes it, without blanks: the only test of a line's kind.
constexpr std::string_view assistantKindBytes = R"("type":"assistant")";
constexpr std::string_view usageKeyBytes = R"("usage")";

}  // namespace

struct ClaudeCodeReader::Parser {
    LineJsonParser json;
};

ClaudeCodeReader::ClaudeCodeReader() : parser_(std::make_unique<Parser>()) {}
ClaudeCodeReader::~ClaudeCodeReader() = default;

void ClaudeCodeReader::parseFile(std::string_view bytes, std::vector<UsageEvent>& events) {
    forEachLine(bytes, [&](std::string_view line) { parseLine(line, events); });
}

void ClaudeCodeReader::parseLine(std::string_view line, std::vector<UsageEvent>& events) {
    if (line.size() < shortestCandidateLineBytes) return;
    if (!containsBytes(line, assistantKindBytes)) return;
    if (!containsBytes(line, usageKeyBytes)) return;

    json::Element root;
    if (parser_->json.parse(line).get(root) != simdjson::SUCCESS || !root.is_object()) return;
    const auto timestamp = json::stringMember(root, "timestamp");
    if (!timestamp) return;
    const auto date = parseIso8601Timestamp(*timestamp);
    if (!date) return;
    const auto message = json::objectMember(root, "message");
    if (!message) return;
    const auto usage = json::objectMember(*message, "usage");
    if (!usage) return;

    const int64_t freshInputTokens = json::int64Member(*usage, "input_tokens").value_or(0);
    const int64_t cacheWriteTokens = json::int64Member(*usage, "cache_creation_input_tokens").value_or(0);
    const int64_t cacheReadTokens = json::int64Member(*usage, "cache_read_input_tokens").value_or(0);
    const int64_t outputTokens = json::int64Member(*usage, "output_tokens").value_or(0);
    const auto model = json::stringMember(*message, "model");

    // Cache reads are billed and watered, but are not counted as input.
    const int64_t inputTokens = checkedAdd(freshInputTokens, cacheWriteTokens);
    const ModelPrice price = modelPrice(model, false);
    events.push_back(UsageEvent{
        *date,
        inputTokens,
        outputTokens,
        costCents(price, freshInputTokens, cacheWriteTokens, cacheReadTokens, outputTokens),
        waterMilliliters(inputTokens, outputTokens, cacheReadTokens),
    });
}

}  // namespace tallowen
