#include "capi/CallbackSampleStore.hpp"

#include "capi/CApiText.hpp"
#include "capi/SampleRecordJson.hpp"

#include <utility>

namespace tallowen::capi {
namespace {

// Calls one operation of the table; a missing callback is a failed store.
template <typename Callback, typename... Arguments>
tw_reply call(Callback callback, void* context, Arguments... arguments) {
    if (callback == nullptr) throw StoreError("opération du store absente");
    tw_reply reply;
    callback(context, arguments..., &reply);
    if (reply.failure) throw StoreError(*reply.failure);
    return reply;
}

std::string textOfReply(const tw_reply& reply) {
    if (!reply.text) throw StoreError("réponse du store illisible (texte attendu)");
    return *reply.text;
}

int64_t integerOfReply(const tw_reply& reply) {
    if (!reply.integer) throw StoreError("réponse du store illisible (nombre attendu)");
    return *reply.integer;
}

}  // namespace

CallbackSampleStore::~CallbackSampleStore() {
    if (callbacks_.release != nullptr) callbacks_.release(callbacks_.context);
}

std::vector<UsageSample> CallbackSampleStore::fetchAll() {
    return parseSampleRecords(textOfReply(call(callbacks_.fetch_all, callbacks_.context)));
}

std::vector<UsageSample> CallbackSampleStore::fetchByDayKey(const std::string& dayKey) {
    return parseSampleRecords(textOfReply(call(callbacks_.fetch_day, callbacks_.context, dayKey.c_str())));
}

std::string CallbackSampleStore::insert(const UsageSample& sample) {
    const std::string json = sampleRecordJson(sample);
    return textOfReply(call(callbacks_.insert, callbacks_.context, json.c_str()));
}

void CallbackSampleStore::update(const UsageSample& sample) {
    const std::string json = sampleRecordJson(sample);
    call(callbacks_.update, callbacks_.context, json.c_str());
}

void CallbackSampleStore::remove(const std::string& persistentId) {
    call(callbacks_.remove, callbacks_.context, persistentId.c_str());
}

void CallbackSampleStore::save() { call(callbacks_.save, callbacks_.context); }

int64_t CallbackSampleStore::count() { return integerOfReply(call(callbacks_.count, callbacks_.context)); }

int64_t CallbackSampleStore::count(const SampleSlot& slot) {
    return integerOfReply(call(callbacks_.count_slot, callbacks_.context, slot.dayKey.c_str(), slot.tool.c_str()));
}

std::optional<UsageSample> CallbackSampleStore::newestInSlot(const SampleSlot& slot) {
    const tw_reply reply = call(callbacks_.newest_in_slot, callbacks_.context, slot.dayKey.c_str(), slot.tool.c_str());
    if (!reply.text) return std::nullopt;
    return parseSampleRecord(*reply.text);
}

int64_t CallbackSampleStore::deleteSlotExcept(const SampleSlot& slot, const std::string& keeperId) {
    return integerOfReply(call(callbacks_.delete_slot_except, callbacks_.context, slot.dayKey.c_str(),
                               slot.tool.c_str(), keeperId.c_str()));
}

std::vector<SampleSlot> CallbackSampleStore::slotPage(int64_t offset, int64_t limit) {
    return parseSampleSlots(textOfReply(call(callbacks_.slot_page, callbacks_.context, offset, limit)));
}

namespace {

// Owns the opener's context for as long as a copy of the opening function lives.
struct OpenerContext {
    tw_store_opener opener;
    explicit OpenerContext(tw_store_opener value) : opener(value) {}
    ~OpenerContext() {
        if (opener.release != nullptr) opener.release(opener.context);
    }
    OpenerContext(const OpenerContext&) = delete;
    OpenerContext& operator=(const OpenerContext&) = delete;
};

}  // namespace

SampleStoreOpener callbackStoreOpener(tw_store_opener opener) {
    auto shared = std::make_shared<const OpenerContext>(opener);
    return [shared]() -> std::unique_ptr<SampleStore> {
        if (shared->opener.open == nullptr) throw StoreError("ouverture du store absente");
        tw_store_callbacks callbacks{};
        tw_reply reply;
        if (!shared->opener.open(shared->opener.context, &callbacks, &reply))
            throw StoreError(reply.failure ? *reply.failure : std::string("le store ne s'ouvre pas"));
        return std::make_unique<CallbackSampleStore>(callbacks);
    };
}

}  // namespace tallowen::capi
