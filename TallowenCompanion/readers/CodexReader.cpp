#include "readers/CodexReader.hpp"

#include "base/CheckedMath.hpp"
#include "readers/ByteSearch.hpp"
#include "readers/Iso8601.hpp"
#include "readers/LineJsonParser.hpp"
#include "readers/LineSplitter.hpp"
#include "readers/ModelPricing.hpp"

#include <algorithm>

namespace tallowen {
namespace {

constexpr std::string_view threadSettingsBytes = "thread_settings_applied";
constexpr std::string_view tokenCountBytes = R"("token_count")";

// The values read, in the order of `linePaths`.
namespace at {
enum : size_t {
    settingsModel,
    timestamp,
    payload,
    rateLimits,
    primary,
    primaryPercent,
    primaryResetsAt,
    secondary,
    secondaryPercent,
    secondaryResetsAt,
    plan,
    inputTokens,
    cachedInputTokens,
    outputTokens,
    count
};
}
constexpr std::string_view settingsModelPath[] = {"payload", "thread_settings", "model"};
constexpr std::string_view timestampPath[] = {"timestamp"};
constexpr std::string_view payloadPath[] = {"payload"};
constexpr std::string_view rateLimitsPath[] = {"payload", "rate_limits"};
constexpr std::string_view primaryPath[] = {"payload", "rate_limits", "primary"};
constexpr std::string_view primaryPercentPath[] = {"payload", "rate_limits", "primary", "used_percent"};
constexpr std::string_view primaryResetsAtPath[] = {"payload", "rate_limits", "primary", "resets_at"};
constexpr std::string_view secondaryPath[] = {"payload", "rate_limits", "secondary"};
constexpr std::string_view secondaryPercentPath[] = {"payload", "rate_limits", "secondary", "used_percent"};
constexpr std::string_view secondaryResetsAtPath[] = {"payload", "rate_limits", "secondary", "resets_at"};
constexpr std::string_view planPath[] = {"payload", "rate_limits", "plan_type"};
// Only the last request's usage; the running totals beside it are not read.
constexpr std::string_view inputTokensPath[] = {"payload", "info", "last_token_usage", "input_tokens"};
constexpr std::string_view cachedInputTokensPath[] = {"payload", "info", "last_token_usage", "cached_input_tokens"};
constexpr std::string_view outputTokensPath[] = {"payload", "info", "last_token_usage", "output_tokens"};
constexpr JsonPath linePaths[at::count] = {
    settingsModelPath,    timestampPath,       payloadPath,           rateLimitsPath,  primaryPath,
    primaryPercentPath,   primaryResetsAtPath, secondaryPath,         secondaryPercentPath,
    secondaryResetsAtPath, planPath,           inputTokensPath,       cachedInputTokensPath,
    outputTokensPath};

using Fields = JsonField[at::count];

std::optional<double> number(const JsonField& field) {
    if (!field.is(JsonField::Kind::integer) && !field.is(JsonField::Kind::number)) return std::nullopt;
    return field.number;
}

// Integers are taken only when written as integers; anything else counts as 0.
int64_t tokens(const JsonField& field) { return field.is(JsonField::Kind::integer) ? field.integer : 0; }

// Written either as an integer or with a fraction; both are seconds since 1970.
std::optional<Date> unixSeconds(const JsonField& field) {
    const auto seconds = number(field);
    if (!seconds) return std::nullopt;
    return Date::fromUnixSeconds(*seconds);
}

QuotaSnapshot quotaSnapshot(const Fields& fields, Date takenAt) {
    QuotaSnapshot snapshot;
    snapshot.at = takenAt;
    if (fields[at::primary].is(JsonField::Kind::object)) {
        snapshot.primaryPercent = number(fields[at::primaryPercent]);
        snapshot.primaryResetAt = unixSeconds(fields[at::primaryResetsAt]);
    }
    if (fields[at::secondary].is(JsonField::Kind::object)) {
        snapshot.secondaryPercent = number(fields[at::secondaryPercent]);
        snapshot.secondaryResetAt = unixSeconds(fields[at::secondaryResetsAt]);
    }
    if (fields[at::plan].is(JsonField::Kind::string)) snapshot.plan = std::string(fields[at::plan].text);
    return snapshot;
}

void applyTokenCount(const Fields& fields, CodexFileState& state) {
    if (!fields[at::timestamp].is(JsonField::Kind::string)) return;
    const auto date = parseIso8601Timestamp(fields[at::timestamp].text);
    if (!date) return;
    if (!fields[at::payload].is(JsonField::Kind::object)) return;

    // Lines need not be in time order: the latest reading wins, not the last line.
    if (fields[at::rateLimits].is(JsonField::Kind::object)) keepLaterQuota(state.quota, quotaSnapshot(fields, *date));

    // Missing `info` or `last_token_usage` leave all three at 0.
    const int64_t inputTokens = tokens(fields[at::inputTokens]);
    const int64_t cachedInputTokens = tokens(fields[at::cachedInputTokens]);
    const int64_t outputTokens = tokens(fields[at::outputTokens]);
    // A rate-limit-only record is not a request.
    if (checkedAdd(inputTokens, outputTokens) < 1) return;

    const ModelPrice price = modelPrice(state.model, true);
    // Codex's input count already holds the cached tokens; they are billed again
    // at the cache-read price on purpose, and only the uncached part is watered.
    const int64_t uncachedInputTokens = std::max<int64_t>(checkedSubtract(inputTokens, cachedInputTokens), 0);
    state.events.push_back(UsageEvent{
        *date,
        inputTokens,
        outputTokens,
        costCents(price, inputTokens, 0, cachedInputTokens, outputTokens),
        waterMilliliters(uncachedInputTokens, outputTokens, cachedInputTokens),
    });
}

}  // namespace

struct CodexReader::Parser {
    LineJsonParser json;
};

CodexReader::CodexReader() : parser_(std::make_unique<Parser>()) {}
CodexReader::~CodexReader() = default;

void CodexReader::parseFile(std::string_view bytes, CodexFileState& state) {
    forEachLine(bytes, [&](std::string_view line) { parseLine(line, state); });
    parser_->json.releaseLongLineBuffers();
}

void CodexReader::parseLine(std::string_view line, CodexFileState& state) {
    const bool namesThreadSettings = containsBytes(line, threadSettingsBytes);
    const bool isTokenCount = containsBytes(line, tokenCountBytes);
    if (!namesThreadSettings && !isTokenCount) return;

    // One parse serves both record kinds: a line that fails to parse changes nothing.
    Fields fields;
    if (!parser_->json.parse(line, linePaths, fields)) return;
    if (namesThreadSettings && fields[at::settingsModel].is(JsonField::Kind::string))
        state.model = std::string(fields[at::settingsModel].text);
    if (isTokenCount) applyTokenCount(fields, state);
}

}  // namespace tallowen
