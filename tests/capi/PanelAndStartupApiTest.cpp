#include "capi/CallbackTables.hpp"

#include "base/JsonRead.hpp"
#include "model/DayKey.hpp"
#include "support/Samples.hpp"

#include <gtest/gtest.h>

namespace tallowen::testing {
namespace {

TEST(PanelSessionApiTest, SamplesAndStatesGoInAndAFrameComesOutAsJson) {
    tw_formatter_callbacks bracketing{};  // every other piece falls back to the engine's own
    bracketing.upper_cased = [](void*, const char* text, tw_reply* r) {
        replyText(r, "«" + std::string(text) + "»");
    };
    tw_formatter* formatter = tw_formatter_create(bracketing);
    const Date now{800000000};
    tw_panel_session* session = tw_panel_session_create(formatter, {true, false, true}, now.secondsSinceReferenceDate);
    tw_formatter_free(formatter);  // the session keeps it

    UsageSample today = slotSample(dayKey(now, LocalCalendar{}), "codex", now, 7);
    today.quotaPrimaryPercent = 85;
    today.quotaPlan = "plus";
    EXPECT_TRUE(tw_panel_session_samples_reloaded(session, capi::sampleRecordsJson({today}).c_str()));
    EXPECT_FALSE(tw_panel_session_samples_reloaded(session, "[{\"tool\":1}]"));
    tw_panel_session_sync_changed(session, false, false, 0, "Development");
    tw_panel_session_login_item_changed(session, true);
    tw_panel_session_store_failed(session, "Store illisible : disque");

    char* json = tw_panel_session_frame(session, now.secondsSinceReferenceDate + 60);
    ASSERT_NE(json, nullptr);
    simdjson::dom::parser parser;
    const simdjson::dom::element frame = parser.parse(std::string(json));
    tw_string_free(json);
    EXPECT_EQ(*json::stringMember(*json::objectMember(frame, "today"), "requestsText"), "07");
    EXPECT_EQ(*json::stringMember(frame, "errorLine"), "Store illisible : disque");
    EXPECT_EQ(*json::stringMember(*json::objectMember(frame, "cloudWarning"), "kind"), "never");
    EXPECT_TRUE(json::objectMember(frame, "loginItem"));
    EXPECT_FALSE(json::objectMember(frame, "updateButton"));
    EXPECT_EQ(*json::stringMember(*json::objectMember(frame, "footer"), "developmentBadge"), "DEVELOPMENT");
    simdjson::dom::element block;
    ASSERT_EQ(json::objectMember(frame, "quotas")->at_key("blocks").at(0).get(block), simdjson::SUCCESS);
    EXPECT_EQ(*json::stringMember(block, "plan"), "«plus»");
    EXPECT_GE(tw_panel_session_next_frame_date(session, now.secondsSinceReferenceDate + 60),
              now.secondsSinceReferenceDate + 60);
    tw_panel_session_free(session);
}

TEST(StartupApiTest, OnceOnlyClaimsSetTheirFlagFirstAndTheChoicesFollowTheEngine) {
    MemorySettingsStore values;
    tw_settings* settings = tw_settings_create(memorySettingsTable(&values));
    EXPECT_TRUE(tw_claim_login_item_registration(settings));
    EXPECT_TRUE(values.boolValue("loginItemRegistered"));
    EXPECT_FALSE(tw_claim_login_item_registration(settings));
    char* notice = tw_claim_first_launch_notice(settings);
    ASSERT_NE(notice, nullptr);
    EXPECT_NE(std::string(notice).find(R"("delaySeconds":0.6,"messageText":"Le compagnon est installé.")"),
              std::string::npos);
    tw_string_free(notice);
    EXPECT_EQ(tw_claim_first_launch_notice(settings), nullptr);
    tw_settings_free(settings);

    EXPECT_TRUE(tw_uses_cloud_database(true, true));
    EXPECT_FALSE(tw_uses_cloud_database(false, true));
    EXPECT_TRUE(tw_login_item_enabled(TW_LOGIN_ITEM_ENABLED));
    EXPECT_FALSE(tw_login_item_enabled(TW_LOGIN_ITEM_REQUIRES_APPROVAL));
}

}  // namespace
}  // namespace tallowen::testing
