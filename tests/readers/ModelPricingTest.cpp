#include "readers/ModelPricing.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>
#include <tuple>

namespace tallowen {
namespace {

// The tenth-of-input cache prices are the doubles the multiplication gives, last bit included.
const ModelPrice opus{5.0, 6.25, 0.5, 25.0}, fable{10.0, 12.5, 0.25, 50.0}, sonnetFive{2.0, 2.5, 0.2, 10.0},
    sonnet{3.0, 3.75, 0.30000000000000004, 15.0}, olderHaiku{0.8, 1.0, 0.08000000000000002, 4.0},
    haikuFourFive{1.0, 1.25, 0.1, 5.0}, codexDefault{1.75, 1.75, 0.17500000000000002, 14.0},
    gptFive{1.25, 1.25, 0.125, 10.0}, reasoning{2.0, 2.0, 0.5, 8.0};

TEST(ModelPricingTest, PriceRule) {
    const std::tuple<std::optional<std::string_view>, bool, ModelPrice> cases[] = {
        {std::nullopt, false, opus}, {std::nullopt, true, codexDefault}, {"", false, opus}, {"", true, codexDefault},
        {"claude-opus-4-1-20250805", false, opus}, {"Claude-Opus-4", false, opus}, {"claude-fable-1", false, fable},
        {"claude-fable-opus", false, fable},  // fable wins over any other family word
        {"claude-sonnet-4-5-20250929", false, sonnet}, {"claude-sonnet", false, sonnet},
        {"claude-sonnet-5", false, sonnetFive}, {"claude-sonnet-5-1", false, sonnetFive},
        {"claude-haiku-4-5", false, haikuFourFive}, {"claude-haiku-4", false, olderHaiku},
        {"claude-3-5-haiku-20241022", false, haikuFourFive},  // the date reads as a version above 4.5
        {"claude-3-haiku", false, olderHaiku},
        {"claude-sonnet-4-5", true, sonnet},  // "claude" decides the side even for the Codex reader
        {"sonnet-4-5", true, codexDefault}, {"gpt-5", false, gptFive}, {"GPT-5", true, gptFive},
        {"gpt5", true, gptFive}, {"gpt-5.1-codex", true, gptFive}, {"gpt-5-codex", true, codexDefault},
        {"gpt-6", true, codexDefault}, {"gpt-4o", true, codexDefault}, {"o3-mini", true, reasoning},
        {"o3", false, reasoning}, {"o4-mini", true, reasoning}, {"o1-preview", true, codexDefault},
        {"codex-mini-latest", false, codexDefault}, {"mystery-model", false, opus},
        {"mystery-model", true, codexDefault},
        // The version is read from the family's token and the two after it; a family word glued to other
        // letters leaves the two after it, and only the first token starting with the family counts.
        {"claude-haiku-4-5-20251001", false, haikuFourFive}, {"gptx-5-1", true, gptFive},
        {"claude-sonnet4-sonnet5", false, sonnet},
    };
    for (const auto& [model, isCodex, expected] : cases)
        EXPECT_EQ(modelPrice(model, isCodex), expected) << model.value_or("(none)") << " codex=" << isCodex;
}

TEST(ModelPricingTest, CostInCentsAndWaterInMillilitersRoundHalvesAwayFromZero) {
    // Price, fresh input, cache writes, cache reads, output, cents.
    const std::tuple<ModelPrice, int64_t, int64_t, int64_t, int64_t, int64_t> costs[] = {
        {opus, 0, 0, 0, 1000000, 2500}, {opus, 1000, 0, 0, 0, 1}, {opus, -1000, 0, 0, 0, -1}, {opus, 0, 0, 0, 0, 0},
        // At the exact doubles 28.500000000000004, 24.500000000000004, 14.500000000000002; 0.3, 0.175
        // and 0.08 would give just under the half.
        {sonnet, 0, 0, 950000, 0, 29}, {codexDefault, 0, 0, 1400000, 0, 25}, {olderHaiku, 0, 0, 1812500, 0, 15},
        // Divided by 1e6 then times 100: 127.49999999999999; times 100 first would give 128.
        {sonnet, 140353, 191824, 19720, 8579, 127},
    };
    for (const auto& [price, fresh, cacheWrite, cacheRead, output, cents] : costs)
        EXPECT_EQ(costCents(price, fresh, cacheWrite, cacheRead, output), cents) << fresh;
    // (0.1 × input + output) × 0.1125: 123.75, 0.45, 4.5, 13.5; cache reads weigh nothing.
    const int64_t water[][4] = {{1000, 1000, 0, 124}, {0, 4, 0, 0}, {0, 40, 0, 5}, {200, 100, 800, 14},
                                {0, 0, 1000000, 0}};
    for (const auto& w : water) EXPECT_EQ(waterMilliliters(w[0], w[1], w[2]), w[3]) << w[0] << " " << w[1];
}

}  // namespace
}  // namespace tallowen
