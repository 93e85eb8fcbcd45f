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

TEST_P(SampleStoreConformance, RoundTripsEveryFieldAndTheDefaults) {
    const UsageSample full = everyFieldSet();
    const UsageSample defaults = UsageSample::created(Date{1.0 / 3.0});
    std::string fullId, defaultsId;
    {
        auto store = open();
        fullId = store->insert(full);
        defaultsId = store->insert(defaults);
        store->save();
    }
    EXPECT_NE(fullId, defaultsId);
    const auto fetched = open()->fetchAll();
    ASSERT_EQ(fetched.size(), 2u);
    const auto& fetchedFull = fetched[0].persistentId == fullId ? fetched[0] : fetched[1];
    const auto& fetchedDefaults = fetched[0].persistentId == fullId ? fetched[1] : fetched[0];
    EXPECT_EQ(fetchedFull.persistentId, fullId);
    EXPECT_EQ(fetchedDefaults.persistentId, defaultsId);
    EXPECT_EQ(storedFields(fetchedFull), storedFields(full));
    EXPECT_EQ(storedFields(fetchedDefaults), storedFields(defaults));
    const auto ofDay = open()->fetchByDayKey("2025-03-14");
    ASSERT_EQ(ofDay.size(), 1u);
    EXPECT_EQ(ofDay[0].persistentId, fullId);
}

TEST_P(SampleStoreConformance, KeepsOnlySavedChanges) {
    std::string keptId, removedId;
    {
        auto store = open();
        keptId = store->insert(everyFieldSet());
        removedId = store->insert(slotSample("2025-03-15", "cursor", Date{1}));
        store->save();
    }
    UsageSample changed = slotSample("2025-03-16", "phone-gemini", Date{2}, 7);
    changed.persistentId = keptId;
    {
        auto unsaved = open();
        unsaved->update(changed);
        unsaved->remove(removedId);
        unsaved->insert(slotSample("2025-03-17", "codex", Date{3}));
        EXPECT_EQ(unsaved->count(), 2);  // pending changes are visible to their own store
    }
    auto store = open();
    ASSERT_EQ(store->count(), 2);
    EXPECT_EQ(storedFields(store->fetchByDayKey("2025-03-14").at(0)), storedFields(everyFieldSet()));
    store->update(changed);
    store->remove(removedId);
    store->remove(removedId);
    store->save();
    const auto fetched = open()->fetchAll();
    ASSERT_EQ(fetched.size(), 1u);
    EXPECT_EQ(fetched[0].persistentId, keptId);
    EXPECT_EQ(storedFields(fetched[0]), storedFields(changed));
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
    const auto keeper = store->newestInSlot(slot);
    ASSERT_TRUE(keeper);
    EXPECT_EQ(keeper->persistentId, newestId);
    EXPECT_EQ(keeper->requests, 2);
    EXPECT_FALSE(store->newestInSlot({"2025-03-16", "codex"}));

    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 2);
    EXPECT_EQ(store->deleteSlotExcept(slot, newestId), 0);
    store->save();
    auto reopened = open();
    EXPECT_EQ(reopened->count(), 3);
    EXPECT_EQ(reopened->count(slot), 1);
}

TEST_P(SampleStoreConformance, PagesSlotsInKeyOrder) {
    const std::vector<SampleSlot> slots = {{"2025-03-15", "codex"},       {"2025-03-14", "cursor"},
                                           {"2025-03-14", "claude-code"}, {"2025-03-15", "codex"},
                                           {"2024-12-31", "phone-other"}, {"2025-03-14", "codex"},
                                           {"2025-03-14", "claude-code"}};
    auto store = open();
    for (const auto& slot : slots) store->insert(slotSample(slot.dayKey, slot.tool, Date{0}));
    std::vector<SampleSlot> paged;
    for (int64_t offset = 0; offset < 9; offset += 3) {
        const auto page = store->slotPage(offset, 3);
        EXPECT_LE(page.size(), 3u);
        paged.insert(paged.end(), page.begin(), page.end());
    }
    auto sorted = slots;
    std::sort(sorted.begin(), sorted.end(),
              [](const SampleSlot& a, const SampleSlot& b) { return std::tie(a.dayKey, a.tool) < std::tie(b.dayKey, b.tool); });
    EXPECT_EQ(paged, sorted);
}

TEST_P(SampleStoreConformance, ACorruptFileFailsEveryOperationWithoutCrashing) {
    dir_.write(storePath().filename(), std::string(4096, 'x') + "not a database");
    auto store = open();
    const UsageSample sample = slotSample("2025-03-14", "codex", Date{0});
    const std::function<void()> operations[] = {
        [&] { store->fetchAll(); },
        [&] { store->fetchByDayKey("2025-03-14"); },
        [&] { store->insert(sample); },
        [&] { store->count(); },
        [&] { store->count({"2025-03-14", "codex"}); },
        [&] { store->newestInSlot({"2025-03-14", "codex"}); },
        [&] { store->slotPage(0, 10); },
    };
    for (const auto& operation : operations) {
        try {
            operation();
            ADD_FAILURE() << "no StoreError";
        } catch (const StoreError& error) {
            EXPECT_STRNE(error.what(), "");
        }
    }
}

TEST_P(SampleStoreConformance, AReadOnlyStoreReadsButRefusesChanges) {
    {
        auto store = open();
        store->insert(everyFieldSet());
        store->save();
    }
    {
        auto readOnly = GetParam().openReadOnly(storePath());
        ASSERT_EQ(readOnly->count(), 1);
        EXPECT_EQ(storedFields(readOnly->fetchAll().at(0)), storedFields(everyFieldSet()));
        EXPECT_THROW(
            {
                readOnly->insert(everyFieldSet());
                readOnly->save();
            },
            StoreError);
    }
    EXPECT_EQ(open()->count(), 1);
}

}  // namespace
}  // namespace tallowen::testing
