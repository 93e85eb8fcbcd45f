#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowen {

// US dollars per million tokens.
struct ModelPrice {
    double input = 0;
    double cacheWrite = 0;
    double cacheRead = 0;
    double output = 0;

    friend bool operator==(const ModelPrice&, const ModelPrice&) = default;
};

// The price of a model name as logged; `isCodex` is true for the Codex reader.
ModelPrice modelPrice(std::optional<std::string_view> model, bool isCodex);

// The version that follows `family` in a model name: claude-sonnet-4-5 with
// "sonnet" gives 4.5, gpt-5.1-codex with "gpt" gives 5.1.
std::optional<double> modelVersion(std::string_view model, std::string_view family);

// (price.input × fresh + price.cacheWrite × cacheWrite + price.cacheRead × cacheRead
//  + price.output × output) ÷ 1,000,000 × 100, rounded halves away from zero.
int64_t costCents(const ModelPrice& price, int64_t freshInputTokens, int64_t cacheWriteTokens,
                  int64_t cacheReadTokens, int64_t outputTokens);

// round((0.1 × input + output + 0 × cacheRead) × 0.1125) millilitres.
int64_t waterMilliliters(int64_t inputTokens, int64_t outputTokens, int64_t cacheReadTokens);

}  // namespace tallowen
