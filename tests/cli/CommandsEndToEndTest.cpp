#include "TallowenRun.hpp"
#include "base/SupportFolderLock.hpp"
#include "support/UsageHome.hpp"

#include <regex>
#include <tuple>

namespace tallowen::testing {
namespace {

using CommandsEndToEndTest = TallowenRun;

TEST_F(CommandsEndToEndTest, ImportStoresWhatScanPrintsAndDaysListsIt) {
    writeUsageHome(scratch, "home");
    const std::string samples =
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
    const CommandResult first = tallowen("import --json");
    EXPECT_TRUE(std::regex_match(
        first.standardOutput,
        std::regex(R"(\{"outcome":"completed","detectedTools":\["claude-code","codex","cursor"\],)"
                   R"("samplesInserted":5,"samplesUpdated":0,"samplesUnchanged":0,"duplicatesRemoved":0,)"
                   R"("filesRead":4,"filesReused":0,"elapsedSeconds":[0-9.e-]+,"lastError":null\}
)"))) << first.standardOutput;
    const std::string days = tallowen("days --json").standardOutput;
    EXPECT_EQ(std::regex_replace(days, std::regex(R"(,"updatedAt":"[^"]*")"), ""), "{" + samples + "\n");
    const auto selected = linesOf(tallowen("days --since 2025-03-15 --tool codex").standardOutput);
    ASSERT_EQ(selected.size(), 2u);
    EXPECT_EQ(selected[1].rfind("2025-03-15  codex                    1         1           800           200        "
                                "0.00         32  ", 0), 0u) << selected[1];
    // Scanning after the import reuses what it read.
    const CommandResult scan = tallowen("scan --json");
    EXPECT_EQ(scan.standardOutput, R"({"detected":["claude-code","codex","cursor"],)" + samples + "\n");
    EXPECT_EQ(scan.standardError, "");
    const std::string table = tallowen("scan").standardOutput;
    EXPECT_EQ(table.rfind("detected: claude-code codex cursor\n\nday         tool  ", 0), 0u);
    EXPECT_NE(table.find("\n2025-03-14  codex               1         1          5000           700        0.01        "
                         "101  12% / - pro\n"), npos) << table;
    EXPECT_NE(table.find("\nfiles read: 0, reused: 4\n"), npos);
}

TEST_F(CommandsEndToEndTest, WhileAnotherProcessImportsTheRequestIsDroppedAndThePanelShowsTheStore) {
    writeUsageHome(scratch, "home");
    std::filesystem::create_directories(data());
    const SupportFolderLock held = SupportFolderLock::tryAcquire(data());
    ASSERT_TRUE(held.acquired());
    EXPECT_EQ(tallowen("import").standardOutput, "import dropped: another tallowen is importing into this data folder\n");
    const CommandResult panel = tallowen("");
    EXPECT_EQ(panel.exitStatus, 0);
    EXPECT_EQ(panel.standardError,
              "tallowen: another tallowen is importing into this data folder; the panel shows the store as it is\n");
    EXPECT_NE(panel.standardOutput.find("■ TALLOWEN_"), npos);
    EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite"));
}

TEST_F(CommandsEndToEndTest, EachFailureIsOneLineWithItsExitStatus) {
    std::filesystem::create_directories(home());
    scratch.write("data/store.sqlite", std::string(3000, 'z'));
    std::vector<std::tuple<std::string, int, std::string>> cases = {
        {"--bogus", 2, "unknown option: --bogus (see tallowen --help)"},
        {"days --since 2025-3-1", 2,
         "days: --since needs a day written YYYY-MM-DD, not 2025-3-1 (see tallowen help days)"},
        {"days --json --csv", 2, "days: --json and --csv both set: give one (see tallowen help days)"},
        {"scan --tool codex", 2, "scan: unknown option: --tool (see tallowen help scan)"},
        {"history --metric joy", 2,
         "history: --metric takes tokens, requests, water or cost, not joy (see tallowen help history)"},
        {"help nothing", 2, "help: no command named nothing (see tallowen --help)"},
        {"fly", 2, "unknown command: fly (see tallowen --help)"},
    };
    for (const char* command : {"statusline", "history", "panel", "summary", "days"})
        cases.emplace_back(command, 1, std::string(command) + ": Store illisible : file is not a database");
    for (const auto& [arguments, exitStatus, error] : cases) {
        SCOPED_TRACE(arguments);
        const CommandResult result = tallowen(arguments);
        EXPECT_EQ(result.exitStatus, exitStatus);
        EXPECT_EQ(result.standardError, "tallowen: " + error + "\n");
        EXPECT_EQ(result.standardOutput, "");
    }
    const CommandResult import = tallowen("import");
    EXPECT_EQ(import.exitStatus, 1);
    EXPECT_NE(import.standardOutput.find("\nlastError: Store illisible : "), npos);
    std::filesystem::remove(home());
    const CommandResult missingHome = tallowen("panel");
    EXPECT_EQ(missingHome.exitStatus, 1);
    EXPECT_EQ(missingHome.standardError, "tallowen: panel: cannot read the home folder " + home().string() + "\n");
}

}  // namespace
}  // namespace tallowen::testing
