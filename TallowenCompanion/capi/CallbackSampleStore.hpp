#pragma once

#include "capi/tallowen.h"
#include "store/SampleStore.hpp"

#include <memory>

namespace tallowen::capi {

// The caller's store (on the Mac, a SwiftData context) behind the engine's
// SampleStore: every operation is one callback, samples cross as JSON, and a
// failure the caller replies becomes a StoreError with its description.
class CallbackSampleStore final : public SampleStore {
public:
    explicit CallbackSampleStore(tw_store_callbacks callbacks) : callbacks_(callbacks) {}
    ~CallbackSampleStore() override;
    CallbackSampleStore(const CallbackSampleStore&) = delete;
    CallbackSampleStore& operator=(const CallbackSampleStore&) = delete;

    std::vector<UsageSample> fetchAll() override;
    std::vector<UsageSample> fetchByDayKey(const std::string& dayKey) override;
    std::string insert(const UsageSample& sample) override;
    void update(const UsageSample& sample) override;
    void remove(const std::string& persistentId) override;
    void save() override;
    int64_t count() override;
    int64_t count(const SampleSlot& slot) override;
    std::optional<UsageSample> newestInSlot(const SampleSlot& slot) override;
    int64_t deleteSlotExcept(const SampleSlot& slot, const std::string& keeperId) override;
    std::vector<SampleSlot> slotPage(int64_t offset, int64_t limit) override;

private:
    tw_store_callbacks callbacks_;
};

// Opens a CallbackSampleStore through the caller's opener; the opener's
// context is released when the last copy of the returned function is gone.
SampleStoreOpener callbackStoreOpener(tw_store_opener opener);

}  // namespace tallowen::capi
