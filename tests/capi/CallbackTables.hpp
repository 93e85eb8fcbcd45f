#pragma once

// C callback tables as the Swift core fills them, backed here by the engine's
// own SQLite store and in-memory settings, so that every byte that crosses the
// C interface is checked against a known implementation.

#include "base/JsonWriter.hpp"
#include "capi/SampleRecordJson.hpp"
#include "capi/tallowen.h"
#include "model/MemorySettingsStore.hpp"
#include "store/SqliteSampleStore.hpp"

#include <filesystem>
#include <string>

namespace tallowen::testing {

inline void replyText(tw_reply* reply, const std::string& text) { tw_reply_text(reply, text.data(), text.size()); }

// A text the C interface hands over, copied and freed.
inline std::string takeText(char* text) {
    std::string copy = text;
    tw_string_free(text);
    return copy;
}

// Runs one callback on the store behind `context`, its exception becoming the reply's failure.
template <typename Body>
void answer(void* context, tw_reply* reply, const Body& body) {
    try {
        body(*static_cast<SampleStore*>(context));
    } catch (const std::exception& error) {
        tw_reply_failure(reply, error.what());
    }
}

inline tw_store_callbacks sqliteStoreTable(SampleStore* store) {
    tw_store_callbacks table{};
    table.context = store;
    table.fetch_all = [](void* c, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { replyText(r, capi::sampleRecordsJson(s.fetchAll())); });
    };
    table.fetch_day = [](void* c, const char* day, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { replyText(r, capi::sampleRecordsJson(s.fetchByDayKey(day))); });
    };
    table.insert = [](void* c, const char* json, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { replyText(r, s.insert(capi::parseSampleRecord(json))); });
    };
    table.update = [](void* c, const char* json, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { s.update(capi::parseSampleRecord(json)); });
    };
    table.remove = [](void* c, const char* id, tw_reply* r) { answer(c, r, [&](SampleStore& s) { s.remove(id); }); };
    table.save = [](void* c, tw_reply* r) { answer(c, r, [&](SampleStore& s) { s.save(); }); };
    table.count = [](void* c, tw_reply* r) { answer(c, r, [&](SampleStore& s) { tw_reply_integer(r, s.count()); }); };
    table.count_slot = [](void* c, const char* day, const char* tool, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { tw_reply_integer(r, s.count(SampleSlot{day, tool})); });
    };
    table.newest_in_slot = [](void* c, const char* day, const char* tool, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) {
            if (const auto newest = s.newestInSlot(SampleSlot{day, tool}))
                replyText(r, capi::sampleRecordJson(*newest));
        });
    };
    table.delete_slot_except = [](void* c, const char* day, const char* tool, const char* keeper, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) { tw_reply_integer(r, s.deleteSlotExcept(SampleSlot{day, tool}, keeper)); });
    };
    table.slot_page = [](void* c, int64_t offset, int64_t limit, tw_reply* r) {
        answer(c, r, [&](SampleStore& s) {
            JsonWriter json;
            json.beginArray();
            for (const SampleSlot& slot : s.slotPage(offset, limit))
                json.beginObject().key("dayKey").string(slot.dayKey).key("tool").string(slot.tool).endObject();
            replyText(r, json.endArray().take());
        });
    };
    table.release = [](void* c) { delete static_cast<SampleStore*>(c); };
    return table;
}

// Opens the SQLite store at a path through the opener table, as many times as asked.
struct SqliteOpener {
    std::filesystem::path path;
    SqliteSampleStore::Access access = SqliteSampleStore::Access::readWrite;
    int released = 0;

    tw_store_opener table() {
        tw_store_opener opener{};
        opener.context = this;
        // The store opens its file lazily: a failure comes back from its first operation.
        opener.open = [](void* c, tw_store_callbacks* store, tw_reply*) {
            auto& self = *static_cast<SqliteOpener*>(c);
            *store = sqliteStoreTable(new SqliteSampleStore(self.path, self.access));
            return true;
        };
        opener.release = [](void* c) { ++static_cast<SqliteOpener*>(c)->released; };
        return opener;
    }
};

inline tw_settings_callbacks memorySettingsTable(MemorySettingsStore* settings) {
    tw_settings_callbacks table{};
    table.context = settings;
    table.bool_value = [](void* c, const char* key) { return static_cast<MemorySettingsStore*>(c)->boolValue(key); };
    table.set_bool = [](void* c, const char* key, bool on) { static_cast<MemorySettingsStore*>(c)->setBool(key, on); };
    table.date_value = [](void* c, const char* key, double* date) {
        const auto value = static_cast<MemorySettingsStore*>(c)->dateValue(key);
        if (value) *date = value->secondsSinceReferenceDate;
        return value.has_value();
    };
    table.set_date = [](void* c, const char* key, double date) {
        static_cast<MemorySettingsStore*>(c)->setDate(key, Date{date});
    };
    return table;
}

}  // namespace tallowen::testing
