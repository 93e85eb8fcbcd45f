#pragma once

#include "model/UsageSample.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tallowen {

// A failure of the store; `what()` is the description shown to the user.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The line shown to the user when the store cannot be read.
inline std::string unreadableStoreText(const std::exception& error) {
    return std::string("Store illisible : ") + error.what();
}

// The (day key, tool) slot of a sample.
struct SampleSlot {
    std::string dayKey;
    std::string tool;

    friend bool operator==(const SampleSlot&, const SampleSlot&) = default;
};

// The stored samples, as the import, the purge and the summary need them.
// Changes made through one store object are kept pending until save();
// every operation may throw StoreError.
class SampleStore {
public:
    virtual ~SampleStore() = default;

    virtual std::vector<UsageSample> fetchAll() = 0;
    virtual std::vector<UsageSample> fetchByDayKey(const std::string& dayKey) = 0;
    // Stores a new record and returns its persistent identifier as text.
    virtual std::string insert(const UsageSample& sample) = 0;
    // Rewrites every field of the record named by `sample.persistentId`.
    virtual void update(const UsageSample& sample) = 0;
    virtual void remove(const std::string& persistentId) = 0;
    virtual void save() = 0;

    virtual int64_t count() = 0;
    virtual int64_t count(const SampleSlot& slot) = 0;
    // The slot's record with the latest `updatedAt` (ties in the store's order).
    virtual std::optional<UsageSample> newestInSlot(const SampleSlot& slot) = 0;
    // Deletes, store-side, every record of the slot but `keeperId`; returns how many.
    virtual int64_t deleteSlotExcept(const SampleSlot& slot, const std::string& keeperId) = 0;
    // Slots of the records sorted by day key then tool, `limit` from `offset`.
    virtual std::vector<SampleSlot> slotPage(int64_t offset, int64_t limit) = 0;
};

// Opens the store afresh on each call, each object for one thread at a time;
// may be called from any thread. Throws StoreError when it cannot.
using SampleStoreOpener = std::function<std::unique_ptr<SampleStore>()>;

}  // namespace tallowen
