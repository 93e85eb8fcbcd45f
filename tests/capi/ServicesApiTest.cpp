#include "capi/CallbackTables.hpp"

#include <gtest/gtest.h>

namespace tallowen::testing {
namespace {

TEST(SyncStatusApiTest, EventsCrossAsValuesAndASuccessOutlivesTheHandle) {
    MemorySettingsStore values;
    tw_settings* settings = tw_settings_create(memorySettingsTable(&values));
    tw_sync_status* status = tw_sync_status_create(settings);
    tw_settings_free(settings);  // the status keeps them
    const tw_cloud_event events[] = {{TW_CLOUD_EVENT_EXPORT, false, 0, false, nullptr},
                                     {TW_CLOUD_EVENT_IMPORT, true, 50, false, "réseau absent"},
                                     {TW_CLOUD_EVENT_EXPORT, true, 60, true, nullptr}};
    tw_sync_status_apply(status, &events[0]);
    tw_sync_status_apply(status, &events[0]);
    EXPECT_EQ(tw_sync_status_pending_count(status), 2);
    tw_sync_status_apply(status, &events[1]);
    char* error = tw_sync_status_last_error_description(status);
    EXPECT_STREQ(error, "réseau absent");
    tw_string_free(error);
    tw_sync_status_apply(status, &events[2]);
    EXPECT_FALSE(tw_sync_status_is_syncing(status));
    EXPECT_EQ(tw_sync_status_last_error_description(status), nullptr);
    tw_sync_status_free(status);

    settings = tw_settings_create(memorySettingsTable(&values));
    tw_sync_status* restarted = tw_sync_status_create(settings);
    double last = 0;
    EXPECT_TRUE(tw_sync_status_last_successful_sync(restarted, &last));
    EXPECT_EQ(last, 60);
    tw_sync_status_free(restarted);
    tw_settings_free(settings);
}

TEST(FormatterApiTest, TheMenuTextsUseTheCallersPiecesAndFallBackWithoutThem) {
    const auto texts = [](const tw_formatter_callbacks& callbacks) {
        tw_formatter* formatter = tw_formatter_create(callbacks);
        char* json = tw_formatter_menu_texts(formatter, 2500000, 350, 400);
        std::string text = json;
        tw_string_free(json);
        tw_formatter_free(formatter);
        return text;
    };
    tw_formatter_callbacks comma{};
    int released = 0;
    comma.context = &released;
    comma.decimal_separator = [](void*, tw_reply* r) { tw_reply_text(r, ",", 1); };
    comma.decimal = [](void*, double value, int32_t digits, tw_reply* r) {
        replyText(r, "d" + std::to_string(digits) + ":" + std::to_string(static_cast<int>(value * 10)));
    };
    comma.us_dollars = [](void*, double, int32_t, tw_reply* r) { tw_reply_failure(r, "no currency"); };
    comma.release = [](void* c) { ++*static_cast<int*>(c); };
    EXPECT_EQ(texts(comma), R"({"tokens":"2,5 M","cost":"$3.50","water":"d1:4 L"})");
    EXPECT_EQ(released, 1);
    EXPECT_EQ(texts(tw_formatter_callbacks{}), R"({"tokens":"2.5 M","cost":"$3.50","water":"0.4 L"})");
}

}  // namespace
}  // namespace tallowen::testing
