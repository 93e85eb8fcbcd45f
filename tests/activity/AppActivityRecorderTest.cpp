#include "activity/AppActivityRecorder.hpp"
#include "base/Files.hpp"
#include "support/Dates.hpp"
#include "support/ScopedTimeZone.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>


namespace tallowen {
namespace {

using testing::TempDir;

constexpr const char* chatGPT = "com.openai.chat";
constexpr const char* claude = "com.anthropic.claudefordesktop";
constexpr const char* perplexity = "ai.perplexity.mac";

// Exact under the sums below, yet only a decimal text of every digit gives it back: the file keeps every bit.
const Date base{760000000 + 1234567.0 / 8388608};

std::filesystem::path activationFile(const TempDir& dir) { return dir.path() / AppActivityRecorder::fileName; }

// What the file on disk holds, as a fresh recorder reads it.
ActivationStamps reloaded(const TempDir& dir) { return AppActivityRecorder(activationFile(dir)).stamps(); }

TEST(AppActivityRecorderTest, RepeatsWithinAMinuteOfTheSameApplicationAreIgnored) {
    struct Case {
        const char* name;
        std::vector<std::pair<const char*, double>> activations;  // bundle id, seconds after base
        ActivationStamps expected;
    };
    const std::vector<Case> cases = {
        {"59 s then 60 s apart",
         {{chatGPT, 0}, {chatGPT, 59}, {chatGPT, 60}},
         {{chatGPT, {base, base.addingSeconds(60)}}}},
        {"per application",
         {{chatGPT, 0}, {claude, 1}, {perplexity, 2}},
         {{chatGPT, {base}}, {claude, {base.addingSeconds(1)}}, {perplexity, {base.addingSeconds(2)}}}},
        {"clock set back until a minute past the last stamp",
         {{claude, 0}, {claude, -3600}, {claude, 59.5}, {claude, 60}},
         {{claude, {base, base.addingSeconds(60)}}}},
        {"unwatched applications", {{"com.apple.Safari", 0}, {"", 0}}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        AppActivityRecorder recorder(activationFile(dir));
        size_t recorded = 0, expected = 0;
        for (const auto& [bundleId, offset] : c.activations)
            recorded += recorder.record(bundleId, base.addingSeconds(offset));
        for (const auto& [bundleId, dates] : c.expected) expected += dates.size();
        EXPECT_EQ(recorded, expected);
        EXPECT_EQ(recorder.stamps(), c.expected);
        EXPECT_EQ(reloaded(dir), c.expected);
        EXPECT_EQ(std::filesystem::exists(activationFile(dir)), !c.expected.empty());
    }
}

TEST(AppActivityRecorderTest, StampsOlderThanSixtyDaysGoAtTheNextRecordOfTheirApplicationOnly) {
    TempDir dir;
    const Date now = base;  // a stamp of exactly sixty days goes
    const Date exactlySixtyDays = now.addingSeconds(-5184000);
    const Date aSecondYounger = exactlySixtyDays.addingSeconds(1);
    const ActivationStamps stored = {
        {chatGPT, {exactlySixtyDays.addingSeconds(-10), exactlySixtyDays, aSecondYounger}},
        {claude, {exactlySixtyDays.addingSeconds(-86400)}},
        {"com.example.unwatched", {exactlySixtyDays}},
    };
    ASSERT_TRUE(writeFileAtomically(activationFile(dir), encodeActivationStamps(stored)));

    AppActivityRecorder recorder(activationFile(dir));
    EXPECT_EQ(recorder.stamps(), stored);
    ASSERT_TRUE(recorder.record(chatGPT, now));

    ActivationStamps expected = stored;
    expected[chatGPT] = {aSecondYounger, now};
    EXPECT_EQ(recorder.stamps(), expected);
    EXPECT_EQ(reloaded(dir), expected);
}

TEST(AppActivityRecorderTest, AnUnreadableFileCountsAsEmptyAndIsReplacedByTheNextRecord) {
    for (const char* content : {"{\"com.openai.chat\": [1, 2", "[]", "{\"com.openai.chat\": [\"x\"]}", ""}) {
        SCOPED_TRACE(content);
        TempDir dir;
        dir.write(AppActivityRecorder::fileName, content);
        AppActivityRecorder recorder(activationFile(dir));
        EXPECT_TRUE(recorder.stamps().empty());
        ASSERT_TRUE(recorder.record(claude, base));
        EXPECT_EQ(reloaded(dir), (ActivationStamps{{claude, {base}}}));
    }
}

TEST(AppActivityRecorderTest, AFailedWriteKeepsTheStampForTheNextWrite) {
    TempDir dir;
    // A file where the folder should be makes every write fail, whoever runs the test.
    const auto folder = dir.path() / "support";
    dir.write("support", "not a folder");
    AppActivityRecorder recorder(folder / AppActivityRecorder::fileName);
    EXPECT_TRUE(recorder.record(chatGPT, base));
    EXPECT_EQ(recorder.stamps().at(chatGPT).size(), 1u);

    std::filesystem::remove(folder);
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(recorder.record(chatGPT, base.addingSeconds(120)));
    EXPECT_EQ(AppActivityRecorder(folder / AppActivityRecorder::fileName).stamps().at(chatGPT),
              (std::vector<Date>{base, base.addingSeconds(120)}));
}

TEST(AppActivityRecorderTest, DayUsageFoldsStampsIntoEpisodesOfZeroTokens) {
    testing::ScopedTimeZone zone("Europe/Paris");
    TempDir dir;
    AppActivityRecorder recorder(activationFile(dir));
    const Date morning = testing::localDate(2025, 3, 14, 9, 0);
    recorder.record(chatGPT, morning);
    recorder.record(chatGPT, morning.addingSeconds(3600));
    recorder.record(chatGPT, morning.addingSeconds(3600 + 7201));   // a new episode at 12:00
    recorder.record(chatGPT, testing::localDate(2025, 3, 15, 23, 59));

    // Zero tokens, cost and water: an activation is a request and nothing more.
    const DayMap expected = {
        {"2025-03-14", {{"com.openai.chat#0", "com.openai.chat#1"}, 3, 0, 0, {9, 12}, 0, 0, std::nullopt}},
        {"2025-03-15", {{"com.openai.chat#2"}, 1, 0, 0, {23}, 0, 0, std::nullopt}}};
    EXPECT_EQ(recorder.dayUsage(LocalCalendar{}), (ToolResults{{UsageTool::macChatGPT, expected}}));
    EXPECT_TRUE(AppActivityRecorder(dir.path() / "none.json").dayUsage(LocalCalendar{}).empty());
}

}  // namespace
}  // namespace tallowen
