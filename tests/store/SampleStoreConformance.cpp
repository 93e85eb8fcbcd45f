#include "store/SampleStoreConformance.hpp"

#include "support/Samples.hpp"

#include <algorithm>

namespace tallowen::testing {
namespace {

// Values a lossy store would bend: sub-microsecond dates, large integers, UTF-8.
UsageSample everyFieldSet() {
    UsageSample sample = slotSample("2025-03-14", "codex", Date{763650000.123456789}, 4);
    sample.sessions = 3;
    sample.inputTokens = 9007199254740993;
    sample.outputTokens = -1;
    sample.episodeHours = {9, 9, 23, 0};
    sample.estimatedCostCents = 1234;
    sample.estimatedWaterMilliliters = 56;
    sample.quotaPrimaryPercent = 42.1;
    sample.quotaPrimaryResetAt = Date{763668000.000001};
    sample.quotaSecondaryPercent = 0.1 + 0.2;
    sample.quotaSecondaryResetAt = Date{-1.5e9};
    sample.quotaPlan = "pro « équipe » \"x\"";
    return sample;
}

TEST_P(SampleStoreConformance, RoundTripsEveryFieldAndKeepsOnlySavedChanges) {
    const UsageSample defaults = UsageSample::created(Date{1.0 / 3.0});
    UsageSample changed = slotSample("2025-03-16", "phone-gemini", Date{2}, 7);
    auto store = open();
    const std::string fullId = store->insert(everyFieldSet());
    changed.persistentId = store->insert(defaults);
    EXPECT_NE(fullId, changed.persistentId);
    store->save();
    store->update(changed);
    store->remove(fullId);
    store->insert(defaults);
    EXPECT_EQ(store->count(), 2);  // pending changes are seen by their own store
    store.reset();                 // ... and gone once it is dropped unsaved
    store = open();

    auto fetched = store->fetchAll();
    ASSERT_EQ(fetched.size(), 2u);
    EXPECT_EQ(storedFields(withId(fetched, fullId)), storedFields(everyFieldSet()));
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

TEST_P(SampleStoreConformance, CountsKeepsTheNewestAndDeletesTheRestOfASlot) {
    const SampleSlot slot{"2025-03-14", "codex"};
    auto store = open();
    store->insert(slotSample(slot.dayKey, slot.tool, Date{100}, 1));
    const std::string newestId = store->insert(slotSample(slot.dayKey, slot.tool, Date{300}, 2));
    store->insert(slotSample(slot.dayKey, slot.tool, Date{200}, 3));
    store->insert(slotSample(slot.dayKey, "codex-other", Date{400}));
    store->insert(slotSample("2025-03-15", slot.tool, Date{500}));
    EXPECT_EQ(store->count(), 5);
    EXPECT_EQ(store->count(slot), 3);
    EXPECT_EQ(store->newestInSlot(slot).value().persistentId, newestId);
    EXPECT_FALSE(store->newestInSlot({"2025-03-16", "codex"}));
    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 2);
    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 0);
    store->save();
    store.reset();
    store = open();
    EXPECT_EQ(store->count(), 3);
    EXPECT_EQ(store->newestInSlot(slot).value().requests, 2);
}

TEST_P(SampleStoreConformance, PagesSlotsInKeyOrder) {
    std::vector<SampleSlot> slots = {{"2025-03-15", "codex"}, {"2025-03-14", "cursor"}, {"2025-03-14", "claude-code"},
                                     {"2025-03-15", "codex"}, {"2024-12-31", "phone-other"}};
    auto store = open();
    for (const auto& slot : slots) store->insert(slotSample(slot.dayKey, slot.tool, Date{0}));
    auto paged = store->slotPage(0, 2);
    for (const int64_t offset : {2, 4, 6}) {
        const auto page = store->slotPage(offset, 2);
        paged.insert(paged.end(), page.begin(), page.end());
    }
    std::sort(slots.begin(), slots.end(), [](const auto& a, const auto& b) {
        return std::tie(a.dayKey, a.tool) < std::tie(b.dayKey, b.tool);
    });
    EXPECT_EQ(paged, slots);
}

TEST_P(SampleStoreConformance, ACorruptFileFailsEveryOperationWithoutCrashing) {
    dir_.write(storePath().filename(), std::string(4096, 'x'));
    auto store = open();
    const std::function<void()> operations[] = {
        [&] { store->fetchAll(); },
        [&] { store->insert(everyFieldSet()); },
        [&] { store->count({"2025-03-14", "codex"}); },
        [&] { store->slotPage(0, 10); },
    };
    for (const auto& operation : operations) EXPECT_THROW(operation(), StoreError);
}

TEST_P(SampleStoreConformance, AReadOnlyStoreReadsButRefusesChanges) {
    open()->insert(everyFieldSet());  // never saved
    auto store = open();
    store->insert(everyFieldSet());
    store->save();
    auto readOnly = GetParam().openReadOnly(storePath());
    EXPECT_EQ(storedFields(readOnly->fetchAll().at(0)), storedFields(everyFieldSet()));
    EXPECT_THROW(
        {
            readOnly->insert(everyFieldSet());
            readOnly->save();
        },
        StoreError);
    EXPECT_EQ(open()->count(), 1);
}

}  // namespace
}  // namespace tallowen::testing
