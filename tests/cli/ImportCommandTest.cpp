#include "base/SupportFolderLock.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/RunCommand.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <unistd.h>

namespace tallowen {
namespace {

using testing::CommandResult;
using testing::runCommand;
using testing::shellQuoted;
using testing::TempDir;

class ImportCommandTest : public ::testing::Test {
protected:
    TempDir scratch;

    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path data() const { return scratch.path() / "data"; }

    CommandResult tallowen(const std::string& command, const std::string& arguments,
                           const std::string& prefix = "") const {
        return runCommand(prefix + "env TZ=Europe/Paris LC_ALL=C.UTF-8 " + shellQuoted(TALLOWEN_EXE) + " " + command +
                              " --home " + shellQuoted(home().string()) + " " + arguments,
                          scratch.path());
    }
    CommandResult tallowen(const std::string& command, const std::filesystem::path& dataFolder,
                           const std::string& arguments) const {
        return tallowen(command, "--data " + shellQuoted(dataFolder.string()) + " " + arguments);
    }
    CommandResult importJson() const { return tallowen("import", data(), "--json"); }

    // The samples array of `scan --json` or `days --json`, without the dates of writing.
    static std::string samplesOf(const std::string& output) {
        const auto start = output.find("\"samples\":[");
        if (start == std::string::npos) return "no samples in: " + output;
        return std::regex_replace(output.substr(start), std::regex(R"(,"updatedAt":"[^"]*")"), "");
    }

    void storeSamples(const std::vector<UsageSample>& samples) const {
        std::filesystem::create_directories(data());
        SqliteSampleStore store(data() / SqliteSampleStore::fileName);
        for (const UsageSample& sample : samples) store.insert(sample);
        store.save();
    }
};

TEST_F(ImportCommandTest, DaysAfterAnImportShowTheFiguresOfTheScan) {
    testing::writeUsageHome(scratch, "home");
    const CommandResult scan = tallowen("scan", scratch.path() / "scan-data", "--json");
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    ASSERT_NE(scan.standardOutput.find("\"tool\":\"cursor\""), std::string::npos) << scan.standardOutput;

    const CommandResult first = importJson();
    ASSERT_EQ(first.exitStatus, 0) << first.standardError;
    EXPECT_EQ(first.standardError, "");
    const std::regex firstReport(
        R"(\{"outcome":"completed","detectedTools":\["claude-code","codex","cursor"\],"samplesInserted":5,)"
        R"("samplesUpdated":0,"samplesUnchanged":0,"duplicatesRemoved":0,"filesRead":4,"filesReused":0,)"
        R"("elapsedSeconds":[0-9.e-]+,"lastError":null\}
)");
    EXPECT_TRUE(std::regex_match(first.standardOutput, firstReport)) << first.standardOutput;

    const CommandResult days = tallowen("days", data(), "--json");
    ASSERT_EQ(days.exitStatus, 0) << days.standardError;
    EXPECT_EQ(days.standardOutput.rfind("{\"samples\":[{", 0), 0u) << days.standardOutput;
    const std::regex updatedAt(R"("updatedAt":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?Z"\})");
    EXPECT_EQ(std::distance(std::sregex_iterator(days.standardOutput.begin(), days.standardOutput.end(), updatedAt),
                            std::sregex_iterator()),
              5)
        << days.standardOutput;
    EXPECT_EQ(samplesOf(days.standardOutput), samplesOf(scan.standardOutput));

    // Nothing changed since: every file is reused and every sample left alone.
    const CommandResult again = tallowen("import", data(), "");
    ASSERT_EQ(again.exitStatus, 0) << again.standardError;
    EXPECT_TRUE(std::regex_match(again.standardOutput,
                                 std::regex("detected tools: claude-code, codex, cursor\n"
                                            "samples: 0 inserted, 0 updated, 5 unchanged\n"
                                            "duplicates removed: 0\n"
                                            "files: 0 read, 4 reused\n"
                                            "elapsed: [0-9]+\\.[0-9]{2} s\n")))
        << again.standardOutput;
    EXPECT_EQ(tallowen("days", data(), "--json").standardOutput, days.standardOutput);
}

TEST_F(ImportCommandTest, ResultsReadButNeverWrittenAreWrittenByTheNextImport) {
    // `scan` leaves the state of a run that stopped after reading the logs:
    // every file is known, no sample is stored.
    testing::writeUsageHome(scratch, "home");
    const CommandResult scan = tallowen("scan", data(), "--json");
    ASSERT_EQ(scan.exitStatus, 0);

    const CommandResult import = importJson();
    EXPECT_NE(import.standardOutput.find("\"samplesInserted\":5,"), std::string::npos) << import.standardOutput;
    EXPECT_NE(import.standardOutput.find("\"filesRead\":0,\"filesReused\":4,"), std::string::npos);
    importJson();
    EXPECT_EQ(samplesOf(tallowen("days", data(), "--json").standardOutput), samplesOf(scan.standardOutput));
}

TEST_F(ImportCommandTest, DaysShowOneSamplePerDayAndToolPhoneIncludedAndFilter) {
    std::filesystem::create_directories(home());
    EXPECT_EQ(tallowen("days", data(), "--json").standardOutput, "{\"samples\":[]}\n");
    EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite"));

    const Date at{763650000};
    std::vector<UsageSample> samples;
    for (int i = 1; i <= 8; ++i)
        samples.push_back(testing::slotSample("2025-03-0" + std::to_string(i), "phone-gemini", at, i));
    // Rows 9 and 10 tie on updatedAt: "UsageSample/p10" sorts before "UsageSample/p9".
    samples.push_back(testing::slotSample("2025-03-10", "codex", at, 9));
    samples.push_back(testing::slotSample("2025-03-10", "codex", at, 10));
    samples.push_back(testing::slotSample("2025-03-11", "claude-code", at.addingSeconds(1), 11));
    samples.push_back(testing::slotSample("2025-03-11", "claude-code", at, 12));
    samples.push_back(testing::slotSample("2025-03-11", "phone-newtool", at, 13));
    storeSamples(samples);

    struct Case {
        std::string arguments;
        std::string requests;  // of the rows shown, in order
    };
    const Case cases[] = {
        {"", "1,2,3,4,5,6,7,8,10,11,13"},
        {"--since 2025-03-08", "8,10,11,13"},
        {"--until=2025-03-02", "1,2"},
        {"--since 2025-03-05 --until 2025-03-10 --tool codex", "10"},
        {"--tool phone-newtool", "13"},
        {"--tool claude", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments);
        const CommandResult result = tallowen("days", data(), c.arguments + " --json");
        ASSERT_EQ(result.exitStatus, 0) << result.standardError;
        std::string requests;
        const std::regex request(R"("requests":(\d+))");
        for (auto match = std::sregex_iterator(result.standardOutput.begin(), result.standardOutput.end(), request);
             match != std::sregex_iterator(); ++match)
            requests += (requests.empty() ? "" : ",") + (*match)[1].str();
        EXPECT_EQ(requests, c.requests) << result.standardOutput;
    }
    const CommandResult table = tallowen("days", data(), "--tool codex");
    EXPECT_EQ(table.exitStatus, 0);
    EXPECT_NE(table.standardOutput.find("2025-03-10  codex"), std::string::npos) << table.standardOutput;
    EXPECT_NE(table.standardOutput.find("2025-03-14T"), std::string::npos) << table.standardOutput;

    for (const std::string bad : {"--since 2025-3-1", "--until yesterday", "--tool", "--bogus"}) {
        SCOPED_TRACE(bad);
        const CommandResult result = tallowen("days", data(), bad);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(result.standardError.rfind("tallowen: days: ", 0), 0u) << result.standardError;
    }
}

TEST_F(ImportCommandTest, ACorruptStoreIsReportedWithoutACrash) {
    testing::writeUsageHome(scratch, "home");
    scratch.write("data/store.sqlite", "SQLite format 2\n" + std::string(2000, '\x07'));

    const CommandResult text = tallowen("import", data(), "");
    EXPECT_EQ(text.exitStatus, 1);
    EXPECT_NE(text.standardOutput.find("detected tools: claude-code, codex, cursor\n"), std::string::npos);
    EXPECT_NE(text.standardOutput.find("\nlastError: Store illisible : "), std::string::npos) << text.standardOutput;

    const CommandResult json = importJson();
    EXPECT_EQ(json.exitStatus, 1);
    EXPECT_NE(json.standardOutput.find(",\"lastError\":\"Store illisible : "), std::string::npos)
        << json.standardOutput;

    const CommandResult days = tallowen("days", data(), "");
    EXPECT_EQ(days.exitStatus, 1);
    EXPECT_EQ(days.standardOutput, "");
    EXPECT_EQ(days.standardError.rfind("tallowen: days: Store illisible : ", 0), 0u) << days.standardError;
}

TEST_F(ImportCommandTest, AnImportWhileAnotherProcessImportsIsDropped) {
    testing::writeUsageHome(scratch, "home");
    std::filesystem::create_directories(data());
    {
        const SupportFolderLock held = SupportFolderLock::tryAcquire(data());
        ASSERT_TRUE(held.acquired());
        const CommandResult json = importJson();
        EXPECT_EQ(json.exitStatus, 0);
        EXPECT_EQ(json.standardOutput.rfind(
                      R"({"outcome":"dropped","reason":"another tallowen is importing into this data folder",)", 0),
                  0u)
            << json.standardOutput;
        const CommandResult text = tallowen("import", data(), "");
        EXPECT_EQ(text.standardOutput, "import dropped: another tallowen is importing into this data folder\n");
        EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite"));
        EXPECT_FALSE(std::filesystem::exists(data() / "import-state.json"));
    }
    EXPECT_NE(importJson().standardOutput.find("\"samplesInserted\":5,"), std::string::npos);
}

TEST_F(ImportCommandTest, AReadOnlyDataFolderStillCompletesTheRunWithAnError) {
    testing::writeUsageHome(scratch, "home");
    ASSERT_EQ(importJson().exitStatus, 0);
    scratch.write("home/.codex/sessions/2025/03/15/rollout-z.jsonl",
                  R"({"timestamp":"2025-03-15T12:00:00Z","type":"event_msg","payload":{"type":"token_count","info":)"
                  R"({"last_token_usage":{"input_tokens":1,"output_tokens":1}}}})"
                  "\n");
    // The superuser writes anywhere: it runs the command as nobody instead, to
    // whom the data folder (the superuser's) is read-only.
    std::string prefix;
    if (::geteuid() == 0) {
        std::filesystem::permissions(scratch.path(), std::filesystem::perms::all, std::filesystem::perm_options::add);
        prefix = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
    } else {
        std::filesystem::permissions(data(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    }
    const CommandResult result = tallowen("import", "--data " + shellQuoted(data().string()), prefix);
    std::filesystem::permissions(data(), std::filesystem::perms::owner_all, std::filesystem::perm_options::add);
    EXPECT_EQ(result.exitStatus, 1) << result.standardError;
    EXPECT_NE(result.standardOutput.find("detected tools: claude-code, codex, cursor\nsamples: "), std::string::npos)
        << result.standardOutput;
    EXPECT_NE(result.standardOutput.find("files: 1 read, 4 reused\n"), std::string::npos) << result.standardOutput;
    EXPECT_NE(result.standardOutput.find("\nlastError: "), std::string::npos) << result.standardOutput;
}

TEST_F(ImportCommandTest, ALineTooBigForTheMemoryLimitWaitsForARunWithMoreAndCostsNothingElse) {
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

    const CommandResult tight = tallowen("import", "--data " + shellQuoted(data().string()), "ulimit -v 250000; ");
    EXPECT_EQ(tight.exitStatus, 0) << tight.standardError;
    EXPECT_NE(tight.standardOutput.find("detected tools: claude-code, codex, cursor\nsamples: 5 inserted"),
              std::string::npos)
        << tight.standardOutput << tight.standardError;
    EXPECT_EQ(tallowen("days", data(), "--since 2025-03-16 --json").standardOutput.find("123456"), std::string::npos);

    const CommandResult roomy = tallowen("import", "--data " + shellQuoted(data().string()), "ulimit -v 800000; ");
    EXPECT_NE(roomy.standardOutput.find("files: 1 read, 4 reused\n"), std::string::npos) << roomy.standardOutput;
    const std::string day = tallowen("days", data(), "--since 2025-03-16 --json").standardOutput;
    EXPECT_NE(day.find("\"inputTokens\":123456,\"outputTokens\":654321"), std::string::npos) << day;
}

}  // namespace
}  // namespace tallowen
