#include "readers/ClaudeCodeReader.hpp"

#include "base/CheckedMath.hpp"
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

// The values read, in the order of `linePaths`.
namespace at {
enum : size_t { timestamp, usage, model, freshInput, cacheWrite, cacheRead, output, count };
}
constexpr std::string_view timestampPath[] = {"timestamp"};
constexpr std::string_view usagePath[] = {"message", "usage"};
constexpr std::string_view modelPath[] = {"message", "model"};
constexpr std::string_view freshInputPath[] = {"message", "usage", "input_tokens"};
constexpr std::string_view cacheWritePath[] = {"message", "usage", "cache_creation_input_tokens"};
constexpr std::string_view cacheReadPath[] = {"message", "usage", "cache_read_input_tokens"};
constexpr std::string_view outputPath[] = {"message", "usage", "output_tokens"};
constexpr JsonPath linePaths[at::count] = {timestampPath,  usagePath,     modelPath, freshInputPath,
                                            cacheWritePath, cacheReadPath, outputPath};

// Integers are taken only when written as integers: 12.5, 12.0, "12" and true count as 0.
int64_t tokens(const JsonField& field) { return field.is(JsonField::Kind::integer) ? field.integer : 0; }

}  // namespace

struct ClaudeCodeReader::Parser {
    LineJsonParser json;
};

ClaudeCodeReader::ClaudeCodeReader() : parser_(std::make_unique<Parser>()) {}
ClaudeCodeReader::~ClaudeCodeReader() = default;

void ClaudeCodeReader::parseFile(std::string_view bytes, std::vector<UsageEvent>& events) {
    forEachLine(bytes, [&](std::string_view line) { parseLine(line, events); });
    parser_->json.releaseLongLineBuffers();
}

void ClaudeCodeReader::parseLine(std::string_view line, std::vector<UsageEvent>& events) {
    if (line.size() < shortestCandidateLineBytes) return;
    if (!containsBytes(line, assistantKindBytes)) return;
    if (!containsBytes(line, usageKeyBytes)) return;

    JsonField fields[at::count];
    if (!parser_->json.parse(line, linePaths, fields)) return;
    if (!fields[at::timestamp].is(JsonField::Kind::string)) return;
    const auto date = parseIso8601Timestamp(fields[at::timestamp].text);
    if (!date) return;
    // Found only inside a `message` that is an object.
    if (!fields[at::usage].is(JsonField::Kind::object)) return;

    const int64_t freshInputTokens = tokens(fields[at::freshInput]);
    const int64_t cacheWriteTokens = tokens(fields[at::cacheWrite]);
    const int64_t cacheReadTokens = tokens(fields[at::cacheRead]);
    const int64_t outputTokens = tokens(fields[at::output]);
    std::optional<std::string_view> model;
    if (fields[at::model].is(JsonField::Kind::string)) model = fields[at::model].text;

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
