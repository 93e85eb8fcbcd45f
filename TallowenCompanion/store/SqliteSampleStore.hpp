#pragma once

#include "base/Result.hpp"
#include "model/DayRecord.hpp"
#include "store/SampleStore.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace tallowen {

// The samples (and the shared per-day notes) in one SQLite database file.
//
// Tables "UsageSample" and "DayRecord" carry the records' fields under their
// own names: dates as REAL seconds since 2001, `episodeHours` as a JSON array
// text, absent optional values as NULL. Nothing makes (dayKey, tool) unique,
// since duplicates arrive from other devices. Identifiers print as
// "UsageSample/p<rowid>" and "DayRecord/p<rowid>"; rows are never renumbered.
//
// The file is opened lazily, so constructing never fails: a missing folder, a
// corrupt or foreign file makes each operation throw StoreError carrying
// SQLite's own message. The first change of an object opens a transaction that
// save() commits; a failed change or save, and destruction without save(),
// roll every pending change back, so the file only ever holds saved states.
// The database runs in WAL mode with a busy timeout, so another connection may
// read while this one writes.
class SqliteSampleStore final : public SampleStore {
public:
    enum class Access { readWrite, readOnly };

    // The file name of the terminal's store inside the support folder.
    static constexpr const char* fileName = "store.sqlite";

    explicit SqliteSampleStore(std::filesystem::path path, Access access = Access::readWrite);
    // The store of a support folder: `fileName` inside it.
    static std::filesystem::path locationIn(const std::filesystem::path& supportFolder) {
        return supportFolder / fileName;
    }
    ~SqliteSampleStore() override;
    SqliteSampleStore(const SqliteSampleStore&) = delete;
    SqliteSampleStore& operator=(const SqliteSampleStore&) = delete;

    std::vector<UsageSample> fetchAll() override;
    std::vector<UsageSample> fetchByDayKey(const std::string& dayKey) override;
    std::string insert(const UsageSample& sample) override;
    // A record that no longer exists (deleted elsewhere) stays deleted.
    void update(const UsageSample& sample) override;
    // Removing a record that no longer exists does nothing.
    void remove(const std::string& persistentId) override;
    void save() override;

    int64_t count() override;
    int64_t count(const SampleSlot& slot) override;
    std::optional<UsageSample> newestInSlot(const SampleSlot& slot) override;
    int64_t deleteSlotExcept(const SampleSlot& slot, const std::string& keeperId) override;
    // Binary text order on (dayKey, tool), then row order: stable between pages.
    std::vector<SampleSlot> slotPage(int64_t offset, int64_t limit) override;

    // The per-day notes written by the phone; kept intact, never interpreted.
    std::vector<DayRecord> fetchDayRecords();
    std::string insertDayRecord(const DayRecord& record);

private:
    class Statement;

    sqlite3* database();
    void openAndPrepareSchema();
    bool reopenAsImmutable();
    Statement statement(const char* sql);
    void execute(const char* sql);
    void beginChange();
    void rollbackPending() noexcept;
    template <typename Change>
    auto change(Change&& apply);
    [[noreturn]] void fail();

    std::filesystem::path path_;
    Access access_;
    sqlite3* db_ = nullptr;
    bool schemaReady_ = false;
    std::map<std::string, sqlite3_stmt*, std::less<>> statements_;
};

// Every sample of the store file, read without changing it; none when the
// file does not exist yet (looking creates no empty store). The failure is
// the line shown to the user: "Store illisible : …".
Result<std::vector<UsageSample>> readStoredSamples(const std::filesystem::path& storeFile);

}  // namespace tallowen
