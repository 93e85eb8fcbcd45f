#include "store/SampleStoreConformance.hpp"

#include "support/Samples.hpp"

namespace tallowen::testing {
namespace {

// Values a lossy store would bend: sub-microsecond dates, large integers, UTF-8.
const UsageSample everyFieldSet{"2025-03-14", "codex", 3, 4, 9007199254740993, -1, {9, 9, 23, 0}, 1234, 56, 42.1,
                                Date{763668000.000001}, 0.1 + 0.2, Date{-1.5e9}, "pro « équipe » \"x\"",
                                Date{763650000.123456789}, {}};

TEST_P(SampleStoreConformance, RoundTripsEveryFieldAndKeepsOnlySavedChanges) {
    const UsageSample defaults = UsageSample::created(Date{1.0 / 3.0});
    UsageSample changed = slotSample("2025-03-16", "phone-gemini", Date{2}, 7);
    auto store = open();
    const std::string fullId = store->insert(everyFieldSet);
    changed.persistentId = store->insert(defaults);
    store->save();
    store->update(changed);
    store->remove(fullId);
    store->insert(defaults);
    EXPECT_EQ(store->count(), 2);  // pending changes are seen by their own store
    store = open();                // ... and gone once it is dropped unsaved

    auto fetched = store->fetchAll();
    ASSERT_EQ(fetched.size(), 2u);
    EXPECT_EQ(storedFields(withId(fetched, fullId)), storedFields(everyFieldSet));
    EXPECT_EQ(storedFields(withId(fetched, changed.persistentId)), storedFields(defaults));
    EXPECT_EQ(store->fetchByDayKey("2025-03-14").at(0).persistentId, fullId);
    store->update(changed);
    store->remove(fullId);
    store->remove(fullId);
    store->save();
    fetched = open()->fetchAll();
    ASSERT_EQ(fetched.size(), 1u);
    EXPECT_EQ(storedFields(withId(fetched, changed.persistentId)), storedFields(changed));
}

TEST_P(SampleStoreConformance, CountsKeepsTheNewestDeletesTheRestOfASlotAndPagesSlotsInKeyOrder) {
    const SampleSlot slot{"2025-03-14", "codex"};
    auto store = open();
    store->insert(slotSample(slot.dayKey, slot.tool, Date{100}, 1));
    const std::string newestId = store->insert(slotSample(slot.dayKey, slot.tool, Date{300}, 2));
    store->insert(slotSample(slot.dayKey, slot.tool, Date{200}, 3));
    store->insert(slotSample(slot.dayKey, "codex-other", Date{400}));
    store->insert(slotSample("2025-03-15", slot.tool, Date{500}));
    store->insert(slotSample("2024-12-31", "phone-other", Date{0}));
    EXPECT_EQ(store->count(), 6);
    EXPECT_EQ(store->count(slot), 3);
    EXPECT_EQ(store->newestInSlot(slot).value().persistentId, newestId);
    EXPECT_FALSE(store->newestInSlot({"2025-03-16", "codex"}));
    auto paged = store->slotPage(0, 4);
    const auto rest = store->slotPage(4, 4);
    paged.insert(paged.end(), rest.begin(), rest.end());
    EXPECT_EQ(paged, (std::vector<SampleSlot>{{"2024-12-31", "phone-other"}, slot, slot, slot,
                                              {slot.dayKey, "codex-other"}, {"2025-03-15", "codex"}}));
    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 2);
    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 0);
    store->save();
    store = open();
    EXPECT_EQ(store->count(), 4);
    EXPECT_EQ(store->newestInSlot(slot).value().requests, 2);
}

TEST_P(SampleStoreConformance, ACorruptFileFailsEveryOperationWithSqlitesMessageAndAReadOnlyStoreRefusesChanges) {
    dir_.write("corrupt.sqlite", std::string(4096, 'x'));
    auto corrupt = GetParam().open(dir_.path() / "corrupt.sqlite", StoreAccess::readWrite);
    // Every operation retries opening the store, and fails the same way again.
    for (const auto& operation : std::vector<std::function<void()>>{
             [&] { corrupt->fetchAll(); }, [&] { corrupt->fetchAll(); }, [&] { corrupt->insert(everyFieldSet); },
             [&] { corrupt->count({"2025-03-14", "codex"}); }, [&] { corrupt->slotPage(0, 10); }})
        EXPECT_EQ(storeFailure(operation), "file is not a database");

    open()->insert(everyFieldSet);  // never saved
    auto store = open();
    store->insert(everyFieldSet);
    store->save();
    auto readOnly = open(StoreAccess::readOnly);
    EXPECT_EQ(storedFields(readOnly->fetchAll().at(0)), storedFields(everyFieldSet));
    EXPECT_THROW(
        {
            readOnly->insert(everyFieldSet);
            readOnly->save();
        },
        StoreError);
    EXPECT_EQ(open()->count(), 1);
}

}  // namespace
}  // namespace tallowen::testing
