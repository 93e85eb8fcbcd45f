#include "BigDigits.hpp"
#include "IcuLocaleFormatter.hpp"
#include "TextWidth.hpp"
#include "base/JsonRead.hpp"
#include "base/SupportFolderLock.hpp"
#include "model/Iso8601Format.hpp"
#include "model/LocalCalendar.hpp"
#include "readers/ModelPricing.hpp"
#include "support/RunCommand.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"
#include "ui/MenuFormats.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <regex>

namespace tallowen {
namespace {

using testing::CommandResult;
using testing::shellQuoted;

// The samples of writeUsageHome as `scan --json` prints them.
const std::string scannedSamples =
    R"("samples":[{"dayKey":"2025-03-14","tool":"claude-code","sessions":3,"requests":3,"inputTokens":1950,)"
    R"("outputTokens":3390,"episodeHours":[10,23,10],"estimatedCostCents":8,"estimatedWaterMilliliters":404},)"
    R"({"dayKey":"2025-03-14","tool":"codex","sessions":1,"requests":1,"inputTokens":5000,"outputTokens":700,)"
    R"("episodeHours":[11],"estimatedCostCents":1,"estimatedWaterMilliliters":101,"quotaPrimaryPercent":12.5,)"
    R"("quotaPrimaryResetAt":"2025-03-14T14:00:00Z","quotaPlan":"pro"},)"
    R"({"dayKey":"2025-03-14","tool":"cursor","sessions":1,"requests":1,"inputTokens":3000,"outputTokens":400,)"
    R"("episodeHours":[],"estimatedCostCents":0,"estimatedWaterMilliliters":79},)"
    R"({"dayKey":"2025-03-15","tool":"claude-code","sessions":1,"requests":1,"inputTokens":10,"outputTokens":0,)"
    R"("episodeHours":[8],"estimatedCostCents":0,"estimatedWaterMilliliters":0},)"
    R"({"dayKey":"2025-03-15","tool":"codex","sessions":1,"requests":1,"inputTokens":800,"outputTokens":200,)"
    R"("episodeHours":[12],"estimatedCostCents":0,"estimatedWaterMilliliters":32}]})";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

// One run of `tallowen` per command, on a home folder and a data folder in a
// scratch folder, in Paris.
class CommandsEndToEndTest : public ::testing::Test {
protected:
    CommandResult tallowen(const std::string& arguments, const char* locale = "C.UTF-8") const {
        return testing::runCommand(std::string("env TZ=Europe/Paris NO_COLOR=1 LC_ALL=") + locale + " " +
                                       shellQuoted(TALLOWEN_EXE) + " " + arguments + " --home " +
                                       shellQuoted(home().string()) + " --data " + shellQuoted(data().string()),
                                   scratch.path());
    }
    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path data() const { return scratch.path() / "data"; }

    testing::ScopedTimeZone zone{"Europe/Paris"};
    testing::TempDir scratch;
};

TEST_F(CommandsEndToEndTest, ScanPrintsEachDayOfEachToolAsJsonOrAsATable) {
    testing::writeUsageHome(scratch, "home");
    const CommandResult json = tallowen("scan --json");
    EXPECT_EQ(json.standardOutput, R"({"detected":["claude-code","codex","cursor"],)" + scannedSamples + "\n");
    EXPECT_EQ(json.standardError, "");
    const CommandResult table = tallowen("scan");
    EXPECT_EQ(table.exitStatus, 0);
    EXPECT_EQ(table.standardOutput.rfind("detected: claude-code codex cursor\n\nday         tool  ", 0), 0u);
    EXPECT_NE(table.standardOutput.find(
                  "\n2025-03-14  codex               1         1          5000           700        0.01        "
                  "101  12% / - pro\n"),
              std::string::npos)
        << table.standardOutput;
    EXPECT_NE(table.standardOutput.find("\nfiles read: 0, reused: 4\n"), std::string::npos);
}

TEST_F(CommandsEndToEndTest, ImportStoresWhatScanReadsAndDaysListsIt) {
    testing::writeUsageHome(scratch, "home");
    const CommandResult first = tallowen("import --json");
    EXPECT_EQ(first.exitStatus, 0) << first.standardError;
    EXPECT_TRUE(std::regex_match(
        first.standardOutput,
        std::regex(R"(\{"outcome":"completed","detectedTools":\["claude-code","codex","cursor"\],)"
                   R"("samplesInserted":5,"samplesUpdated":0,"samplesUnchanged":0,"duplicatesRemoved":0,)"
                   R"("filesRead":4,"filesReused":0,"elapsedSeconds":[0-9.e-]+,"lastError":null\}
)")))
        << first.standardOutput;
    EXPECT_TRUE(std::regex_match(tallowen("import").standardOutput,
                                 std::regex("detected tools: claude-code, codex, cursor\n"
                                            "samples: 0 inserted, 0 updated, 5 unchanged\n"
                                            "duplicates removed: 0\nfiles: 0 read, 4 reused\n"
                                            "elapsed: [0-9]+\\.[0-9]{2} s\n")));

    const std::string days = tallowen("days --json").standardOutput;
    EXPECT_EQ(std::regex_replace(days, std::regex(R"(,"updatedAt":"[^"]*")"), ""), "{" + scannedSamples + "\n");
    const auto selected = linesOf(tallowen("days --since 2025-03-15 --tool codex").standardOutput);
    ASSERT_EQ(selected.size(), 2u);
    EXPECT_EQ(selected[1].rfind("2025-03-15  codex                    1         1           800           200        "
                                "0.00         32  ", 0),
              0u)
        << selected[1];
}

TEST_F(CommandsEndToEndTest, WhileAnotherProcessImportsTheRequestIsDroppedAndThePanelShowsTheStore) {
    testing::writeUsageHome(scratch, "home");
    std::filesystem::create_directories(data());
    const SupportFolderLock held = SupportFolderLock::tryAcquire(data());
    ASSERT_TRUE(held.acquired());
    EXPECT_EQ(tallowen("import").standardOutput,
              "import dropped: another tallowen is importing into this data folder\n");
    const CommandResult panel = tallowen("");
    EXPECT_EQ(panel.exitStatus, 0);
    EXPECT_EQ(panel.standardError,
              "tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n");
    EXPECT_NE(panel.standardOutput.find("■ TALLOWEN_"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite"));
}

TEST_F(CommandsEndToEndTest, EachFailureIsOneLineWithItsExitStatus) {
    std::filesystem::create_directories(home());
    scratch.write("data/store.sqlite", std::string(3000, 'z'));
    const struct {
        std::string arguments;
        int exitStatus;
        std::string errorStart;
    } cases[] = {
        {"--bogus", 2, "tallowen: unknown option: --bogus (see tallowen --help)\n"},
        {"days --since 2025-3-1", 2,
         "tallowen: days: --since needs a day written YYYY-MM-DD, not 2025-3-1 (see tallowen help days)\n"},
        {"days --json --csv", 2, "tallowen: days: --json and --csv both set: give one (see tallowen help days)\n"},
        {"scan --tool codex", 2, "tallowen: scan: unknown option: --tool (see tallowen help scan)\n"},
        {"history --metric joy", 2,
         "tallowen: history: --metric takes tokens, requests, water or cost, not joy (see tallowen help history)\n"},
        {"help nothing", 2, "tallowen: help: no command named nothing (see tallowen --help)\n"},
        {"fly", 2, "tallowen: unknown command: fly (see tallowen --help)\n"},
        {"statusline", 1, "tallowen: statusline: Store illisible : file is not a database\n"},
        {"history", 1, "tallowen: history: Store illisible : file is not a database\n"},
        {"panel", 1, "tallowen: panel: Store illisible : file is not a database\n"},
        {"summary", 1, "tallowen: summary: Store illisible : file is not a database\n"},
        {"days", 1, "tallowen: days: Store illisible : file is not a database\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const CommandResult result = tallowen(c.arguments);
        EXPECT_EQ(result.exitStatus, c.exitStatus);
        EXPECT_EQ(result.standardError, c.errorStart);
        EXPECT_EQ(result.standardOutput, "");
    }
    const CommandResult import = tallowen("import");
    EXPECT_EQ(import.exitStatus, 1);
    EXPECT_NE(import.standardOutput.find("\nlastError: Store illisible : "), std::string::npos);
    const CommandResult missingHome = testing::runCommand(
        shellQuoted(TALLOWEN_EXE) + " panel --home " + shellQuoted((scratch.path() / "none").string()), scratch.path());
    EXPECT_EQ(missingHome.exitStatus, 1);
    EXPECT_EQ(missingHome.standardError, "tallowen: panel: cannot read the home folder " +
                                             (scratch.path() / "none").string() + "\n");
}

// One Claude Code reply of today.
struct Reply {
    Date at;
    int64_t input, cacheWrite, cacheRead, output;

    std::string line() const {
        return "{\"type\":\"assistant\",\"timestamp\":\"" + *iso8601UtcText(at) +
               "\",\"message\":{\"model\":\"claude-sonnet-4-5\",\"usage\":{\"input_tokens\":" + std::to_string(input) +
               ",\"cache_creation_input_tokens\":" + std::to_string(cacheWrite) +
               ",\"cache_read_input_tokens\":" + std::to_string(cacheRead) +
               ",\"output_tokens\":" + std::to_string(output) + "}}}\n";
    }
    int64_t cents() const {
        return costCents(modelPrice("claude-sonnet-4-5", false), input, cacheWrite, cacheRead, output);
    }
};

TEST_F(CommandsEndToEndTest, ThePanelShowsTodaysLogsInFrenchAndTheSummaryAgrees) {
    const LocalCalendar calendar;
    const Date now = Date::fromUnixSeconds(
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
    const Date todayStart = calendar.startOfDay(now);
    // The command must see the same day as the figures written here.
    if (calendar.startOfDayAdding(now, 1)->secondsSince(now) < 120) GTEST_SKIP() << "too close to midnight";
    const Reply today{std::max(now.addingSeconds(-600), todayStart), 1200, 30000, 200000, 4000};
    const Reply before{calendar.startOfDayAdding(now, -2)->addingSeconds(12 * 3600), 3000, 60000, 400000, 9000};
    scratch.write("home/.claude/projects/demo/session.jsonl", today.line() + before.line());

    const CommandResult imported = tallowen("", "fr_FR.UTF-8");
    ASSERT_EQ(imported.exitStatus, 0) << imported.standardError;
    const auto lines = linesOf(imported.standardOutput);
    for (const std::string& line : lines) EXPECT_LE(cli::displayWidth(line), 48) << line;
    const auto bigCount = cli::bigDigitLines("01");
    EXPECT_EQ(lines.at(0), "■ TALLOWEN_");
    EXPECT_EQ(lines.at(2), "AUJOURD'HUI · RECOURS RÉELS");
    EXPECT_EQ(lines.at(3), bigCount[0] + "  RECOURS");
    // Two measured days of 53,600 tokens on average: the counter counts every token.
    EXPECT_EQ(lines.at(4), bigCount[1] + "  35\u202f200 TOKENS");
    EXPECT_EQ(lines.at(6), moneyText(today.cents(), IcuLocaleFormatter("fr_FR")) + " au tarif API");
    EXPECT_NE(imported.standardOutput.find("CETTE SEMAINE\n2 recours · 107 k · "), std::string::npos);
    EXPECT_NE(imported.standardOutput.find("OUTILS DÉTECTÉS\nCLAUDE CODE\n"), std::string::npos);
    EXPECT_EQ(lines.back().find("Import "), 36u);
    // Without importing, the store gives the same panel.
    EXPECT_EQ(tallowen("panel", "fr_FR.UTF-8").standardOutput, imported.standardOutput);

    simdjson::dom::parser parser;
    const std::string json = tallowen("summary --json").standardOutput;
    simdjson::dom::element root;
    ASSERT_EQ(parser.parse(json).get(root), simdjson::SUCCESS) << json;
    EXPECT_EQ(json::stringMember(root, "locale"), "en_US");
    EXPECT_EQ(json::int64Member(*json::objectMember(root, "summary"), "totalTokens"), 35200 + 72000);
    const auto menu = json::objectMember(root, "menu");
    EXPECT_EQ(json::stringMember(*menu, "todayRequestsText"), "01");
    EXPECT_EQ(json::stringMember(*menu, "tokenCounterText"), "35,200");
    EXPECT_EQ(json::stringMember(*menu, "detectedToolsText"), "CLAUDE CODE");
}

TEST_F(CommandsEndToEndTest, ALineTooBigForTheMemoryLimitWaitsForARunWithMoreAndCostsNothingElse) {
#if defined(__SANITIZE_ADDRESS__) || defined(__APPLE__)
    GTEST_SKIP() << "needs an address-space limit that the address sanitizer and macOS do not honour";
#endif
    testing::writeUsageHome(scratch, "home");
    // One reply whose text makes it 64 MB long.
    std::string reply = R"({"type":"assistant","timestamp":"2025-03-16T09:00:00Z","message":{"model":"claude-sonnet-4-5",)"
                        R"("content":[{"type":"text","text":")";
    reply.append(64u << 20, 'x');
    reply += R"("}],"usage":{"input_tokens":123456,"output_tokens":654321}}})";
    scratch.write("home/.claude/projects/-home-dev-app/huge.jsonl", reply + "\n");
    const auto importUnder = [&](const char* addressSpaceKilobytes) {
        return testing::runCommand(std::string("ulimit -v ") + addressSpaceKilobytes + "; env TZ=Europe/Paris LC_ALL=C.UTF-8 " +
                                       shellQuoted(TALLOWEN_EXE) + " import --home " + shellQuoted(home().string()) +
                                       " --data " + shellQuoted(data().string()),
                                   scratch.path());
    };

    const CommandResult tight = importUnder("250000");
    EXPECT_EQ(tight.exitStatus, 0) << tight.standardError;
    EXPECT_NE(tight.standardOutput.find("detected tools: claude-code, codex, cursor\nsamples: 5 inserted"),
              std::string::npos)
        << tight.standardOutput << tight.standardError;
    EXPECT_EQ(tallowen("days --since 2025-03-16 --json").standardOutput.find("123456"), std::string::npos);

    const CommandResult roomy = importUnder("800000");
    EXPECT_NE(roomy.standardOutput.find("files: 1 read, 4 reused\n"), std::string::npos) << roomy.standardOutput;
    const std::string day = tallowen("days --since 2025-03-16 --json").standardOutput;
    EXPECT_NE(day.find("\"inputTokens\":123456,\"outputTokens\":654321"), std::string::npos) << day;
}

}  // namespace
}  // namespace tallowen
