#include "capi/CallbackSampleStore.hpp"

#include "capi/CallbackTables.hpp"
#include "store/SampleStoreConformance.hpp"

#include <memory>

namespace tallowen::testing {
namespace {

// The conformance suite through the C callback table: what the engine sends
// and reads back crosses as JSON, so the round trip of every field is checked.
std::unique_ptr<SampleStore> openThroughCallbacks(const std::filesystem::path& path, StoreAccess access) {
    SqliteOpener opener{path, access};
    return capi::callbackStoreOpener(opener.table())();
}

INSTANTIATE_TEST_SUITE_P(CallbackTable, SampleStoreConformance,
                         ::testing::Values(SampleStoreFactory{"CallbackTable", openThroughCallbacks}));

TEST(CallbackSampleStoreTest, AMalformedOrMissingAnswerIsAStoreFailureNeverData) {
    tw_store_callbacks table{};
    table.fetch_all = [](void*, tw_reply* r) { replyText(r, R"([{"dayKey":"2025-03-14"}])"); };
    table.count = [](void*, tw_reply* r) { replyText(r, "12"); };
    table.slot_page = [](void*, int64_t, int64_t, tw_reply* r) { replyText(r, "{not json"); };
    table.save = [](void*, tw_reply* r) { tw_reply_failure(r, "disque plein"); };
    capi::CallbackSampleStore store(table);
    EXPECT_THROW(store.fetchAll(), StoreError);
    EXPECT_THROW(store.count(), StoreError);
    EXPECT_THROW(store.slotPage(0, 1), StoreError);
    EXPECT_THROW(store.remove("x"), StoreError);  // no callback at all
    EXPECT_EQ(storeFailure([&] { store.save(); }), "disque plein");
}

}  // namespace
}  // namespace tallowen::testing
