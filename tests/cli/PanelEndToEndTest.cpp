#include "BigDigits.hpp"
#include "IcuLocaleFormatter.hpp"
#include "TextWidth.hpp"
#include "model/DayKey.hpp"
#include "model/Iso8601Format.hpp"
#include "base/JsonRead.hpp"
#include "readers/ModelPricing.hpp"
#include "summary/BottleLevel.hpp"
#include "support/RunCommand.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

#include <chrono>

namespace tallowen {
namespace {

using testing::runCommand;
using testing::shellQuoted;
using testing::TempDir;

constexpr const char* timeZone = "Europe/Paris";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

bool hasLine(const std::vector<std::string>& lines, std::string_view text) {
    for (const std::string& line : lines)
        if (line.find(text) != std::string::npos) return true;
    return false;
}

std::string iso(Date date) { return iso8601UtcText(date).value(); }

// One Claude Code reply and its expected figures.
struct Reply {
    Date at;
    int64_t input, cacheWrite, cacheRead, output;

    std::string line() const {
        return "{\"type\":\"assistant\",\"timestamp\":\"" + iso(at) +
               "\",\"message\":{\"model\":\"claude-sonnet-4-5\",\"usage\":{\"input_tokens\":" + std::to_string(input) +
               ",\"cache_creation_input_tokens\":" + std::to_string(cacheWrite) +
               ",\"cache_read_input_tokens\":" + std::to_string(cacheRead) +
               ",\"output_tokens\":" + std::to_string(output) + "}}}\n";
    }
    int64_t tokens() const { return input + cacheWrite + output; }
    int64_t cents() const {
        return costCents(modelPrice("claude-sonnet-4-5", false), input, cacheWrite, cacheRead, output);
    }
    int64_t water() const { return waterMilliliters(input + cacheWrite, output, cacheRead); }
};

class PanelEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto wall = std::chrono::system_clock::now().time_since_epoch();
        now = Date::fromUnixSeconds(std::chrono::duration<double>(wall).count());
        const auto tomorrow = calendar.startOfDayAdding(now, 1);
        // The command must see the same day as the figures written here.
        if (!tomorrow || tomorrow->secondsSince(now) < 120) GTEST_SKIP() << "too close to midnight in Paris";
        todayStart = calendar.startOfDay(now);
    }

    std::string tallowen(const std::string& arguments, const char* locale = "fr_FR.UTF-8") {
        const auto result = runCommand("env TZ=" + std::string(timeZone) + " LC_ALL=" + locale + " NO_COLOR=1 " +
                                           shellQuoted(TALLOWEN_EXE) + " " + arguments + " --home " +
                                           shellQuoted(home.path().string()) + " --data " +
                                           shellQuoted((home.path() / "data").string()),
                                       scratch.path());
        EXPECT_EQ(result.exitStatus, 0) << result.standardError;
        return result.standardOutput;
    }

    // A moment of today at least a minute old, never before midnight.
    Date earlierToday(double secondsAgo) const { return std::max(now.addingSeconds(-secondsAgo), todayStart); }

    testing::ScopedTimeZone zone{timeZone};
    LocalCalendar calendar;
    TempDir home;
    TempDir scratch;
    Date now;
    Date todayStart;
};

TEST_F(PanelEndToEndTest, ImportThenPanelShowsTheFiguresOfTheLogsInFrench) {
    const Reply today1{earlierToday(600), 1200, 30000, 200000, 4000};
    const Reply today2{earlierToday(300), 800, 5000, 150000, 2500};
    const Reply twoDaysAgo{calendar.startOfDayAdding(now, -2)->addingSeconds(12 * 3600), 3000, 60000, 400000, 9000};
    home.write(".claude/projects/demo/session.jsonl", today1.line() + "not json\n" + today2.line() + twoDaysAgo.line());

    const Date codexAt = earlierToday(200);
    const std::string resetAt = std::to_string(static_cast<int64_t>(now.unixSeconds()) + 3 * 3600 + 600);
    home.write(".codex/sessions/2026/rollout.jsonl",
               "{\"timestamp\":\"" + iso(codexAt) +
                   "\",\"type\":\"turn_context\",\"payload\":{\"type\":\"thread_settings_applied\","
                   "\"thread_settings\":{\"model\":\"gpt-5\"}}}\n"
                   "{\"timestamp\":\"" + iso(codexAt) +
                   "\",\"type\":\"event_msg\",\"payload\":{\"type\":\"token_count\",\"info\":{\"last_token_usage\":"
                   "{\"input_tokens\":20000,\"cached_input_tokens\":15000,\"output_tokens\":1500}},"
                   "\"rate_limits\":{\"primary\":{\"used_percent\":82.0,\"resets_at\":" + resetAt +
                   "},\"plan_type\":\"plus\"}}}\n");
    const int64_t codexCents = costCents(modelPrice("gpt-5", true), 20000, 0, 15000, 1500);
    const int64_t codexWater = waterMilliliters(5000, 1500, 15000);

    const IcuLocaleFormatter french("fr_FR");
    const int64_t todayCents = today1.cents() + today2.cents() + codexCents;
    const int64_t todayWater = today1.water() + today2.water() + codexWater;
    const int64_t weekTokens = today1.tokens() + today2.tokens() + 21500 + twoDaysAgo.tokens();
    const int64_t weekCents = todayCents + twoDaysAgo.cents();
    ASSERT_EQ(today1.tokens() + today2.tokens() + 21500, 65000);
    ASSERT_EQ(weekTokens, 137000);

    const auto lines = linesOf(tallowen(""));
    for (const std::string& line : lines) EXPECT_LE(cli::displayWidth(line), 48) << line;
    EXPECT_EQ(lines.at(0), "■ TALLOWEN_");
    EXPECT_EQ(lines.at(2), "AUJOURD'HUI · RECOURS RÉELS");
    const auto bigCount = cli::bigDigitLines("03");
    EXPECT_EQ(lines.at(3), bigCount[0] + "  RECOURS");
    // Two measured days of 68,500 tokens on average: the counter counts every token.
    EXPECT_EQ(lines.at(4), bigCount[1] + "  65\u202f000 TOKENS");
    EXPECT_EQ(lines.at(6), moneyText(todayCents, french) + " au tarif API");
    EXPECT_NE(lines.at(6).find("\u00a0$US au tarif API"), std::string::npos);
    EXPECT_TRUE(hasLine(lines, "EAU · AUJOURD'HUI"));
    EXPECT_TRUE(hasLine(lines, "    " + litresText(todayWater, french)));
    EXPECT_TRUE(hasLine(lines, "≈ "));
    EXPECT_TRUE(hasLine(lines, comparisonLine(bottleLevel(todayWater, twoDaysAgo.water()))));
    EXPECT_TRUE(hasLine(lines, "2 · 43 k"));
    EXPECT_TRUE(hasLine(lines, "1 · 21 k"));
    EXPECT_TRUE(hasLine(lines, "CETTE SEMAINE"));
    EXPECT_TRUE(hasLine(lines, "4 recours · 137 k · " + moneyText(weekCents, french)));
    EXPECT_TRUE(hasLine(lines, "QUOTAS"));
    EXPECT_TRUE(hasLine(lines, "CODEX PLUS"));
    EXPECT_TRUE(hasLine(lines, "82 %    reset 3 h"));
    EXPECT_TRUE(hasLine(lines, "OUTILS DÉTECTÉS"));
    EXPECT_TRUE(hasLine(lines, "CLAUDE CODE · CODEX"));
    EXPECT_NE(lines.back().find("Import "), std::string::npos);
    EXPECT_FALSE(hasLine(lines, "\x1b["));
    EXPECT_FALSE(hasLine(lines, "iCloud"));

    // Without importing, the store gives the same panel.
    EXPECT_EQ(linesOf(tallowen("panel")), lines);

    // The summary as JSON agrees with the panel.
    simdjson::dom::parser parser;
    const std::string json = tallowen("summary --json");
    simdjson::dom::element root;
    ASSERT_EQ(parser.parse(json).get(root), simdjson::SUCCESS) << json;
    const auto summary = json::objectMember(root, "summary");
    const auto menu = json::objectMember(root, "menu");
    ASSERT_TRUE(summary && menu);
    EXPECT_EQ(json::int64Member(*summary, "totalTokens"), 137000);
    EXPECT_EQ(json::int64Member(*summary, "measuredDays"), 2);
    EXPECT_EQ(json::int64Member(*summary, "todayWaterMilliliters"), todayWater);
    EXPECT_EQ(json::int64Member(*summary, "dayReferenceMilliliters"), twoDaysAgo.water());
    const BottleLevel level = bottleLevel(todayWater, twoDaysAgo.water());
    const char* levelNames[] = {"empty", "low", "medium", "full", "overflow"};
    EXPECT_EQ(json::stringMember(root, "level"), levelNames[rawValue(level)]);
    EXPECT_EQ(json::stringMember(root, "comparisonLine"), comparisonLine(level));
    EXPECT_EQ(json::stringMember(root, "dayKey"), dayKey(now, calendar));
    EXPECT_EQ(json::int64Member(*menu, "todayRequests"), 3);
    EXPECT_EQ(json::stringMember(*menu, "todayRequestsText"), "03");
    EXPECT_EQ(json::stringMember(*menu, "todayTokensText"), "65 k");
    EXPECT_EQ(json::int64Member(*menu, "todayCostCents"), todayCents);
    EXPECT_EQ(json::stringMember(*menu, "weekLine"), "4 recours · 137 k · " + moneyText(weekCents, french));
    EXPECT_EQ(json::stringMember(*menu, "detectedToolsText"), "CLAUDE CODE · CODEX");
}

TEST_F(PanelEndToEndTest, AnEmptyHomeShowsTheEmptyPanel) {
    const auto lines = linesOf(tallowen(""));
    const auto bigCount = cli::bigDigitLines("00");
    EXPECT_EQ(lines.at(3), bigCount[0] + "  RECOURS");
    EXPECT_EQ(lines.at(4), bigCount[1] + "  0 TOKENS");
    EXPECT_EQ(lines.at(6), "? au tarif API");
    EXPECT_TRUE(hasLine(lines, "0,0 L"));
    EXPECT_TRUE(hasLine(lines, "PREMIERS JOURS MESURÉS"));
    EXPECT_TRUE(hasLine(lines, "0 recours · 0 · ?"));
    EXPECT_FALSE(hasLine(lines, "QUOTAS"));
    EXPECT_TRUE(hasLine(lines, "Aucun pour l'instant. Claude Code, Codex et"));
    for (const std::string& line : lines) EXPECT_LE(cli::displayWidth(line), 48) << line;

    // Under the POSIX locale the figures are written the American way.
    const std::string json = tallowen("summary --json", "C");
    EXPECT_NE(json.find("\"locale\":\"en_US\""), std::string::npos) << json;
}

}  // namespace
}  // namespace tallowen
