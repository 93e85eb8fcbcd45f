#include "readers/CodexReader.hpp"

#include "base/CheckedMath.hpp"
#include "base/JsonRead.hpp"
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

void applyThreadSettings(json::Element root, CodexFileState& state) {
    const auto payload = json::objectMember(root, "payload");
    if (!payload) return;
    const auto settings = json::objectMember(*payload, "thread_settings");
    if (!settings) return;
    if (const auto model = json::stringMember(*settings, "model")) state.model = std::string(*model);
}

std::optional<Date> unixSecondsMember(json::Element object, std::string_view key) {
    // Written either as an integer or with a fraction; both are seconds since 1970.
    const auto seconds = json::doubleMember(object, key);
    if (!seconds) return std::nullopt;
    return Date::fromUnixSeconds(*seconds);
}

QuotaSnapshot quotaSnapshot(json::Element rateLimits, Date at) {
    QuotaSnapshot snapshot;
    snapshot.at = at;
    if (const auto primary = json::objectMember(rateLimits, "primary")) {
        snapshot.primaryPercent = json::doubleMember(*primary, "used_percent");
        snapshot.primaryResetAt = unixSecondsMember(*primary, "resets_at");
    }
    if (const auto secondary = json::objectMember(rateLimits, "secondary")) {
        snapshot.secondaryPercent = json::doubleMember(*secondary, "used_percent");
        snapshot.secondaryResetAt = unixSecondsMember(*secondary, "resets_at");
    }
    if (const auto plan = json::stringMember(rateLimits, "plan_type")) snapshot.plan = std::string(*plan);
    return snapshot;
}

void applyTokenCount(json::Element root, CodexFileState& state) {
    const auto timestamp = json::stringMember(root, "timestamp");
    if (!timestamp) return;
    const auto date = parseIso8601Timestamp(*timestamp);
    if (!date) return;
    const auto payload = json::objectMember(root, "payload");
    if (!payload) return;

    // Lines need not be in time order: the latest reading wins, not the last line.
    if (const auto rateLimits = json::objectMember(*payload, "rate_limits"))
        keepLaterQuota(state.quota, quotaSnapshot(*rateLimits, *date));

    // Only the last request's usage; the running totals beside it are not read.
    int64_t inputTokens = 0;
    int64_t cachedInputTokens = 0;
    int64_t outputTokens = 0;
    if (const auto info = json::objectMember(*payload, "info")) {
        if (const auto last = json::objectMember(*info, "last_token_usage")) {
            inputTokens = json::int64Member(*last, "input_tokens").value_or(0);
            cachedInputTokens = json::int64Member(*last, "cached_input_tokens").value_or(0);
            outputTokens = json::int64Member(*last, "output_tokens").value_or(0);
        }
    }
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
}

void CodexReader::parseLine(std::string_view line, CodexFileState& state) {
    const bool namesThreadSettings = containsBytes(line, threadSettingsBytes);
    const bool isTokenCount = containsBytes(line, tokenCountBytes);
    if (!namesThreadSettings && !isTokenCount) return;

    // One parse serves both record kinds: a line that fails to parse changes nothing.
    json::Element root;
    if (parser_->json.parse(line).get(root) != simdjson::SUCCESS) return;
    if (namesThreadSettings) applyThreadSettings(root, state);
    if (isTokenCount && root.is_object()) applyTokenCount(root, state);
}

}  // namespace tallowen
