#include "readers/ModelPricing.hpp"

#include "base/CheckedMath.hpp"

#include <charconv>
#include <string>
#include <vector>

namespace tallowen {
namespace {

// Cache reads are billed at one tenth of the input price, computed in double
// precision exactly as the published tables derive them, so these three keep
// their last bit (0.17500000000000002, 0.30000000000000004, 0.08000000000000002).
constexpr double codexDefaultCacheRead = 1.75 * 0.1;
constexpr double sonnetCacheRead = 3.0 * 0.1;
constexpr double olderHaikuCacheRead = 0.8 * 0.1;

constexpr ModelPrice codexDefaultPrice{1.75, 1.75, codexDefaultCacheRead, 14.0};
constexpr ModelPrice opusPrice{5.0, 6.25, 0.5, 25.0};
constexpr ModelPrice fablePrice{10.0, 12.5, 0.25, 50.0};
constexpr ModelPrice sonnetPrice{3.0, 3.75, sonnetCacheRead, 15.0};
constexpr ModelPrice sonnetFivePrice{2.0, 2.5, 0.2, 10.0};
constexpr ModelPrice olderHaikuPrice{0.8, 1.0, olderHaikuCacheRead, 4.0};
constexpr ModelPrice haikuFourFivePrice{1.0, 1.25, 0.1, 5.0};
constexpr ModelPrice reasoningPrice{2.0, 2.0, 0.5, 8.0};
constexpr ModelPrice gptFivePrice{1.25, 1.25, 0.125, 10.0};

constexpr double millilitersPerWeightedToken = 0.1125;

bool isAsciiLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Model names are ASCII in every log we read; other bytes keep their case.
std::string asciiLowercased(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lowered;
}

std::vector<std::string_view> alphanumericTokens(std::string_view text) {
    std::vector<std::string_view> tokens;
    size_t start = 0;
    for (size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && isAsciiLetterOrDigit(text[i])) continue;
        if (i > start) tokens.push_back(text.substr(start, i - start));
        start = i + 1;
    }
    return tokens;
}

// The whole text must read as a number.
std::optional<double> decimalNumber(std::string_view text) {
    if (text.empty()) return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string joinedWithDots(const std::vector<std::string_view>& parts) {
    std::string joined;
    for (std::string_view part : parts) {
        if (part.empty()) continue;
        if (!joined.empty()) joined += '.';
        joined += part;
    }
    return joined;
}

bool contains(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

ModelPrice claudePrice(std::string_view m) {
    if (contains(m, "fable")) return fablePrice;
    if (contains(m, "opus")) return opusPrice;
    if (contains(m, "sonnet")) {
        const auto version = modelVersion(m, "sonnet");
        return version && *version >= 5.0 ? sonnetFivePrice : sonnetPrice;
    }
    if (contains(m, "haiku")) {
        const auto version = modelVersion(m, "haiku");
        return version && *version >= 4.5 ? haikuFourFivePrice : olderHaikuPrice;
    }
    return opusPrice;
}

ModelPrice openAiPrice(std::string_view m) {
    if (m.starts_with("o3") || m.starts_with("o4")) return reasoningPrice;
    const auto version = modelVersion(m, "gpt");
    if (version && *version >= 5.0 && *version < 6.0) return gptFivePrice;
    return codexDefaultPrice;
}

bool isClaudeSide(std::string_view m, bool isCodex) {
    if (contains(m, "claude")) return true;
    const bool namesOpenAiFamily =
        m.starts_with("gpt") || m.starts_with("o1") || m.starts_with("o3") || m.starts_with("o4");
    return !namesOpenAiFamily && !contains(m, "codex") && !isCodex;
}

}  // namespace

ModelPrice modelPrice(std::optional<std::string_view> model, bool isCodex) {
    if (!model || model->empty()) return isCodex ? codexDefaultPrice : opusPrice;
    const std::string m = asciiLowercased(*model);
    return isClaudeSide(m, isCodex) ? claudePrice(m) : openAiPrice(m);
}

std::optional<double> modelVersion(std::string_view model, std::string_view family) {
    const std::vector<std::string_view> tokens = alphanumericTokens(model);
    size_t familyIndex = 0;
    while (familyIndex < tokens.size() && !tokens[familyIndex].starts_with(family)) ++familyIndex;
    if (familyIndex == tokens.size()) return std::nullopt;

    std::vector<std::string_view> following;
    for (size_t i = familyIndex + 1; i < tokens.size() && following.size() < 2; ++i) following.push_back(tokens[i]);

    std::vector<std::string_view> parts{tokens[familyIndex].substr(family.size())};
    parts.insert(parts.end(), following.begin(), following.end());
    if (const auto version = decimalNumber(joinedWithDots(parts))) return version;
    // A family word glued to other letters (gptx-5-1): the following tokens alone.
    return decimalNumber(joinedWithDots(following));
}

int64_t costCents(const ModelPrice& price, int64_t freshInputTokens, int64_t cacheWriteTokens,
                  int64_t cacheReadTokens, int64_t outputTokens) {
    // One product per statement: a fused multiply-add would change the last
    // bit of the sum and, at a half cent, the rounded result.
    const double freshInputDollars = price.input * static_cast<double>(freshInputTokens);
    const double cacheWriteDollars = price.cacheWrite * static_cast<double>(cacheWriteTokens);
    const double cacheReadDollars = price.cacheRead * static_cast<double>(cacheReadTokens);
    const double outputDollars = price.output * static_cast<double>(outputTokens);
    double millionTokenDollars = freshInputDollars + cacheWriteDollars;
    millionTokenDollars += cacheReadDollars;
    millionTokenDollars += outputDollars;
    return roundedToInt64(millionTokenDollars / 1000000.0 * 100.0);
}

int64_t waterMilliliters(int64_t inputTokens, int64_t outputTokens, int64_t cacheReadTokens) {
    const double weightedInput = 0.1 * static_cast<double>(inputTokens);
    const double weightedCacheRead = 0.0 * static_cast<double>(cacheReadTokens);
    double weightedTokens = weightedInput + static_cast<double>(outputTokens);
    weightedTokens += weightedCacheRead;
    return roundedToInt64(weightedTokens * millilitersPerWeightedToken);
}

}  // namespace tallowen
