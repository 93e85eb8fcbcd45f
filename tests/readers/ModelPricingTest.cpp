#include "readers/ModelPricing.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tallowen {
namespace {

const ModelPrice opus{5.0, 6.25, 0.5, 25.0};
const ModelPrice fable{10.0, 12.5, 0.25, 50.0};
const ModelPrice sonnet{3.0, 3.75, 0.30000000000000004, 15.0};
const ModelPrice sonnetFive{2.0, 2.5, 0.2, 10.0};
const ModelPrice olderHaiku{0.8, 1.0, 0.08000000000000002, 4.0};
const ModelPrice haikuFourFive{1.0, 1.25, 0.1, 5.0};
const ModelPrice codexDefault{1.75, 1.75, 0.17500000000000002, 14.0};
const ModelPrice gptFive{1.25, 1.25, 0.125, 10.0};
const ModelPrice reasoning{2.0, 2.0, 0.5, 8.0};

TEST(ModelPricingTest, TenthOfInputPricesKeepTheirLastBit) {
    EXPECT_EQ(modelPrice(std::nullopt, true).cacheRead, 1.75 * 0.1);
    EXPECT_NE(modelPrice(std::nullopt, true).cacheRead, 0.175);
    EXPECT_EQ(modelPrice("claude-sonnet-4", false).cacheRead, 0.30000000000000004);
    EXPECT_NE(modelPrice("claude-sonnet-4", false).cacheRead, 0.3);
    EXPECT_EQ(modelPrice("claude-haiku-3", false).cacheRead, 0.08000000000000002);
    EXPECT_NE(modelPrice("claude-haiku-3", false).cacheRead, 0.08);
}

TEST(ModelPricingTest, PriceRule) {
    struct Case {
        std::optional<std::string> model;
        bool isCodex;
        ModelPrice expected;
    };
    const Case cases[] = {
        {std::nullopt, false, opus},
        {std::nullopt, true, codexDefault},
        {"", false, opus},
        {"", true, codexDefault},
        {"claude-opus-4-1-20250805", false, opus},
        {"claude-opus-4-5", false, opus},
        {"Claude-Opus-4", false, opus},
        {"claude-fable-1", false, fable},
        // Fable wins over any other family word in the name.
        {"claude-fable-opus", false, fable},
        {"claude-sonnet-4-5-20250929", false, sonnet},
        {"claude-sonnet-4-20250514", false, sonnet},
        {"claude-sonnet", false, sonnet},
        {"claude-sonnet-5", false, sonnetFive},
        {"claude-sonnet-5-1", false, sonnetFive},
        {"claude-haiku-4-5", false, haikuFourFive},
        // The tokens after "haiku" are the date: 20241022, at or above 4.5.
        {"claude-3-5-haiku-20241022", false, haikuFourFive},
        {"claude-haiku-4", false, olderHaiku},
        {"claude-3-haiku", false, olderHaiku},
        // "claude" in the name decides the side even for the Codex reader.
        {"claude-sonnet-4-5", true, sonnet},
        {"gpt-5", false, gptFive},
        {"gpt-5", true, gptFive},
        {"GPT-5", true, gptFive},
        {"gpt5", true, gptFive},
        {"gpt-5.1-codex", true, gptFive},
        {"gpt-5.1", true, gptFive},
        // "5.codex" does not read as a number, nor does it on the second try.
        {"gpt-5-codex", true, codexDefault},
        {"gpt-6", true, codexDefault},
        {"gpt-4.1", true, codexDefault},
        {"gpt-4o", true, codexDefault},
        {"o3-mini", true, reasoning},
        {"o3", false, reasoning},
        {"o4-mini", true, reasoning},
        {"o1-preview", true, codexDefault},
        {"codex-mini-latest", false, codexDefault},
        {"mystery-model", false, opus},
        {"mystery-model", true, codexDefault},
        // No "claude", so the Codex flag sends it to the OpenAI side.
        {"sonnet-4-5", true, codexDefault},
    };
    for (const Case& c : cases) {
        const auto model = c.model ? std::optional<std::string_view>(*c.model) : std::nullopt;
        EXPECT_EQ(modelPrice(model, c.isCodex), c.expected) << (c.model ? *c.model : "(none)") << " codex=" << c.isCodex;
    }
}

TEST(ModelPricingTest, VersionReader) {
    struct Case {
        std::string model;
        std::string family;
        std::optional<double> expected;
    };
    const Case cases[] = {
        {"claude-sonnet-4-5-20250929", "sonnet", 4.5},
        {"claude-sonnet-4-20250514", "sonnet", 4.20250514},
        {"gpt-5.1-codex", "gpt", 5.1},
        {"gpt-5", "gpt", 5.0},
        {"gpt5", "gpt", 5.0},
        {"gpt5-1", "gpt", 5.1},
        {"claude-3-5-haiku-20241022", "haiku", 20241022.0},
        {"claude-sonnet", "sonnet", std::nullopt},
        {"claude-opus-4", "sonnet", std::nullopt},
        {"gpt-4o", "gpt", std::nullopt},
        {"gpt-5-codex", "gpt", std::nullopt},
        // The glued rest does not read, the two following tokens do.
        {"gptx-5-1", "gpt", 5.1},
        // Only the first token that begins with the family word counts, even
        // when a later one would read ("5").
        {"sonnet4-sonnet5", "sonnet", std::nullopt},
    };
    for (const Case& c : cases) EXPECT_EQ(modelVersion(c.model, c.family), c.expected) << c.model;
}

TEST(ModelPricingTest, CostInCents) {
    struct Case {
        const char* why;
        ModelPrice price;
        int64_t fresh, cacheWrite, cacheRead, output;
        int64_t expectedCents;
    };
    const Case cases[] = {
        {"25 $ per million output tokens", opus, 0, 0, 0, 1000000, 2500},
        {"5 $ × 1000 / 1e6 × 100 = 0.5, half away from zero", opus, 1000, 0, 0, 0, 1},
        {"-0.5 rounds away from zero too", opus, -1000, 0, 0, 0, -1},
        {"nothing costs nothing", opus, 0, 0, 0, 0, 0},
        // 10×5 + 5×6.25 + 1000×0.5 + 2×25 = 631.25 $/M → 0.063125 cents.
        {"a small reply", opus, 10, 5, 1000, 2, 0},
        // 0.30000000000000004 × 950000 / 1e6 × 100 = 28.500000000000004 (0.3 would give 28.499999999999996).
        {"sonnet cache read at its exact double", sonnet, 0, 0, 950000, 0, 29},
        // 0.17500000000000002 × 1400000 → 24.500000000000004 (0.175 would give 24.499999999999996).
        {"codex cache read at its exact double", codexDefault, 0, 0, 1400000, 0, 25},
        // 0.08000000000000002 × 1812500 → 14.500000000000002 (0.08 would give 14.499999999999998).
        {"older haiku cache read at its exact double", olderHaiku, 0, 0, 1812500, 0, 15},
        // Divided by 1e6 then times 100: 127.49999999999999; times 100 first would give 127.5 → 128.
        {"division before multiplication", sonnet, 140353, 191824, 19720, 8579, 127},
    };
    for (const Case& c : cases)
        EXPECT_EQ(costCents(c.price, c.fresh, c.cacheWrite, c.cacheRead, c.output), c.expectedCents) << c.why;
}

TEST(ModelPricingTest, WaterInMilliliters) {
    struct Case {
        int64_t input, output, cacheRead;
        int64_t expectedMilliliters;
    };
    const Case cases[] = {
        {1000, 1000, 0, 124},  // (100 + 1000) × 0.1125 = 123.75
        {0, 4, 0, 0},          // 0.45
        {0, 40, 0, 5},         // 4.5, half away from zero
        {200, 100, 800, 14},   // (20 + 100) × 0.1125 = 13.5; cache reads weigh nothing
        {0, 0, 1000000, 0},
        {0, 0, 0, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(waterMilliliters(c.input, c.output, c.cacheRead), c.expectedMilliliters)
            << c.input << " " << c.output << " " << c.cacheRead;
}

}  // namespace
}  // namespace tallowen
