#include "capi/CallbackTables.hpp"

#include "model/DayKey.hpp"
#include "support/Samples.hpp"

#include <gtest/gtest.h>

namespace tallowen::testing {
namespace {

TEST(PanelSessionApiTest, MalformedSamplesAreRefusedAndTheLastWellFormedOnesKept) {
    tw_formatter* formatter = tw_formatter_create(tw_formatter_callbacks{});
    const Date now{800000000};
    tw_panel_session* session = tw_panel_session_create(formatter, {true, false, true}, now.secondsSinceReferenceDate);
    tw_formatter_free(formatter);  // the session keeps it
    UsageSample today = slotSample(dayKey(now, LocalCalendar{}), "codex", now, 7);
    EXPECT_TRUE(tw_panel_session_samples_reloaded(session, capi::sampleRecordsJson({today}).c_str()));
    EXPECT_FALSE(tw_panel_session_samples_reloaded(session, "[{\"tool\":1}]"));
    const std::string frame = takeText(tw_panel_session_frame(session, now.secondsSinceReferenceDate + 60));
    tw_panel_session_free(session);
    EXPECT_NE(frame.find(R"("requestsText":"07")"), std::string::npos) << frame;
}

TEST(FormatterApiTest, TheMenuTextsUseTheCallersPiecesAndFallBackWithoutThem) {
    const auto texts = [](const tw_formatter_callbacks& callbacks) {
        tw_formatter* formatter = tw_formatter_create(callbacks);
        std::string text = takeText(tw_formatter_menu_texts(formatter, 2500000, 350, 400));
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
