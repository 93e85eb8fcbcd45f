#include "store/SqliteSampleStore.hpp"

#include "base/SqliteFileUri.hpp"

#include "base/JsonWriter.hpp"

#include <simdjson.h>
#include <sqlite3.h>
#include <unistd.h>

#include <charconv>
#include <string_view>
#include <utility>

namespace tallowen {
namespace {

// A writer waits this long for another connection's write lock before failing.
constexpr int busyTimeoutMilliseconds = 5000;

constexpr std::string_view sampleIdPrefix = "UsageSample/p";
constexpr std::string_view dayRecordIdPrefix = "DayRecord/p";

// Creation time as seconds since 2001: 2451910.5 is the Julian day of 2001-01-01 00:00 UTC.
#define TALLOWEN_NOW_SINCE_2001 "((julianday('now') - 2451910.5) * 86400.0)"

constexpr const char* schemaSql =
    "CREATE TABLE IF NOT EXISTS UsageSample ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " dayKey TEXT NOT NULL DEFAULT '',"
    " tool TEXT NOT NULL DEFAULT '',"
    " sessions INTEGER NOT NULL DEFAULT 0,"
    " requests INTEGER NOT NULL DEFAULT 0,"
    " inputTokens INTEGER NOT NULL DEFAULT 0,"
    " outputTokens INTEGER NOT NULL DEFAULT 0,"
    " episodeHours TEXT NOT NULL DEFAULT '[]',"
    " estimatedCostCents INTEGER NOT NULL DEFAULT 0,"
    " estimatedWaterMilliliters INTEGER NOT NULL DEFAULT 0,"
    " quotaPrimaryPercent REAL,"
    " quotaPrimaryResetAt REAL,"
    " quotaSecondaryPercent REAL,"
    " quotaSecondaryResetAt REAL,"
    " quotaPlan TEXT,"
    " updatedAt REAL NOT NULL DEFAULT " TALLOWEN_NOW_SINCE_2001 ");"
    "CREATE INDEX IF NOT EXISTS UsageSampleSlot ON UsageSample (dayKey, tool);"
    "CREATE TABLE IF NOT EXISTS DayRecord ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " dayKey TEXT NOT NULL DEFAULT '',"
    " \"count\" INTEGER NOT NULL DEFAULT 0,"
    " updatedAt REAL NOT NULL DEFAULT " TALLOWEN_NOW_SINCE_2001 ","
    " note TEXT,"
    " validatedAt REAL,"
    " dayType TEXT NOT NULL DEFAULT 'normal',"
    " extraPersonal INTEGER NOT NULL DEFAULT 0);";

#undef TALLOWEN_NOW_SINCE_2001

#define TALLOWEN_SAMPLE_FIELDS                                                                          \
    "dayKey, tool, sessions, requests, inputTokens, outputTokens, episodeHours, estimatedCostCents, " \
    "estimatedWaterMilliliters, quotaPrimaryPercent, quotaPrimaryResetAt, quotaSecondaryPercent, "    \
    "quotaSecondaryResetAt, quotaPlan, updatedAt"

#define TALLOWEN_SELECT_SAMPLES "SELECT id, " TALLOWEN_SAMPLE_FIELDS " FROM UsageSample"

constexpr const char* fetchAllSql = TALLOWEN_SELECT_SAMPLES " ORDER BY id";
constexpr const char* fetchByDayKeySql = TALLOWEN_SELECT_SAMPLES " WHERE dayKey=? ORDER BY id";
constexpr const char* newestInSlotSql =
    TALLOWEN_SELECT_SAMPLES " WHERE dayKey=? AND tool=? ORDER BY updatedAt DESC LIMIT 1";
constexpr const char* insertSampleSql =
    "INSERT INTO UsageSample (" TALLOWEN_SAMPLE_FIELDS ") VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char* updateSampleSql =
    "UPDATE UsageSample SET dayKey=?, tool=?, sessions=?, requests=?, inputTokens=?, outputTokens=?, "
    "episodeHours=?, estimatedCostCents=?, estimatedWaterMilliliters=?, quotaPrimaryPercent=?, "
    "quotaPrimaryResetAt=?, quotaSecondaryPercent=?, quotaSecondaryResetAt=?, quotaPlan=?, updatedAt=? "
    "WHERE id=?";

#undef TALLOWEN_SELECT_SAMPLES
#undef TALLOWEN_SAMPLE_FIELDS

std::string formatId(std::string_view prefix, int64_t rowId) {
    return std::string(prefix) + std::to_string(rowId);
}

std::optional<int64_t> parseId(std::string_view prefix, std::string_view text) {
    if (!text.starts_with(prefix)) return std::nullopt;
    const std::string_view digits = text.substr(prefix.size());
    if (digits.empty() || digits.front() < '1' || digits.front() > '9') return std::nullopt;
    int64_t rowId = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), rowId);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return rowId;
}

int64_t sampleRowId(const std::string& persistentId) {
    const auto rowId = parseId(sampleIdPrefix, persistentId);
    if (!rowId) throw StoreError("invalid UsageSample identifier: " + persistentId);
    return *rowId;
}

std::string encodeHours(const std::vector<int64_t>& hours) {
    JsonWriter writer;
    writer.beginArray();
    for (const int64_t hour : hours) writer.integer(hour);
    writer.endArray();
    return writer.take();
}

// Text written by another device may be anything: what is not an integer is dropped.
std::vector<int64_t> decodeHours(simdjson::dom::parser& parser, std::string_view text) {
    std::vector<int64_t> hours;
    simdjson::dom::array array;
    if (parser.parse(text.data(), text.size()).get_array().get(array) != simdjson::SUCCESS) return hours;
    for (const auto element : array) {
        int64_t hour = 0;
        if (element.type() == simdjson::dom::element_type::INT64 && element.get_int64().get(hour) == simdjson::SUCCESS)
            hours.push_back(hour);
    }
    return hours;
}

}  // namespace

// A cached prepared statement, reset and unbound when this handle goes.
class SqliteSampleStore::Statement {
public:
    Statement(SqliteSampleStore& store, sqlite3_stmt* stmt) : store_(store), stmt_(stmt) {}
    ~Statement() {
        sqlite3_reset(stmt_);
        sqlite3_clear_bindings(stmt_);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int index, std::string_view text) {
        check(sqlite3_bind_text64(stmt_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
        return *this;
    }
    Statement& bind(int index, int64_t value) {
        check(sqlite3_bind_int64(stmt_, index, value));
        return *this;
    }
    Statement& bind(int index, double value) {
        check(sqlite3_bind_double(stmt_, index, value));
        return *this;
    }
    Statement& bind(int index, Date value) { return bind(index, value.secondsSinceReferenceDate); }
    template <typename T>
    Statement& bind(int index, const std::optional<T>& value) {
        if (value) return bind(index, *value);
        check(sqlite3_bind_null(stmt_, index));
        return *this;
    }

    // True while a row is available.
    bool step() {
        const int result = sqlite3_step(stmt_);
        if (result == SQLITE_ROW) return true;
        if (result == SQLITE_DONE) return false;
        store_.fail();
    }
    void run() {
        while (step()) {
        }
    }

    bool isNull(int column) const { return sqlite3_column_type(stmt_, column) == SQLITE_NULL; }
    int64_t integer(int column) const { return sqlite3_column_int64(stmt_, column); }
    double real(int column) const { return sqlite3_column_double(stmt_, column); }
    Date date(int column) const { return Date{real(column)}; }
    std::string text(int column) const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
        if (bytes == nullptr) return {};
        return std::string(bytes, static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
    }
    std::optional<double> optionalReal(int column) const {
        if (isNull(column)) return std::nullopt;
        return real(column);
    }
    std::optional<Date> optionalDate(int column) const {
        if (isNull(column)) return std::nullopt;
        return date(column);
    }
    std::optional<std::string> optionalText(int column) const {
        if (isNull(column)) return std::nullopt;
        return text(column);
    }

private:
    void check(int result) {
        if (result != SQLITE_OK) store_.fail();
    }

    SqliteSampleStore& store_;
    sqlite3_stmt* stmt_;
};

namespace {

// Binds the fifteen fields, in table order, to parameters 1 to 15.
void bindSample(auto& statement, const UsageSample& sample) {
    statement.bind(1, sample.dayKey)
        .bind(2, sample.tool)
        .bind(3, sample.sessions)
        .bind(4, sample.requests)
        .bind(5, sample.inputTokens)
        .bind(6, sample.outputTokens)
        .bind(7, encodeHours(sample.episodeHours))
        .bind(8, sample.estimatedCostCents)
        .bind(9, sample.estimatedWaterMilliliters)
        .bind(10, sample.quotaPrimaryPercent)
        .bind(11, sample.quotaPrimaryResetAt)
        .bind(12, sample.quotaSecondaryPercent)
        .bind(13, sample.quotaSecondaryResetAt)
        .bind(14, sample.quotaPlan)
        .bind(15, sample.updatedAt);
}

UsageSample readSample(const auto& row, simdjson::dom::parser& parser) {
    UsageSample sample;
    sample.persistentId = formatId(sampleIdPrefix, row.integer(0));
    sample.dayKey = row.text(1);
    sample.tool = row.text(2);
    sample.sessions = row.integer(3);
    sample.requests = row.integer(4);
    sample.inputTokens = row.integer(5);
    sample.outputTokens = row.integer(6);
    sample.episodeHours = decodeHours(parser, row.text(7));
    sample.estimatedCostCents = row.integer(8);
    sample.estimatedWaterMilliliters = row.integer(9);
    sample.quotaPrimaryPercent = row.optionalReal(10);
    sample.quotaPrimaryResetAt = row.optionalDate(11);
    sample.quotaSecondaryPercent = row.optionalReal(12);
    sample.quotaSecondaryResetAt = row.optionalDate(13);
    sample.quotaPlan = row.optionalText(14);
    sample.updatedAt = row.date(15);
    return sample;
}

}  // namespace

SqliteSampleStore::SqliteSampleStore(std::filesystem::path path, Access access)
    : path_(std::move(path)), access_(access) {}

SqliteSampleStore::~SqliteSampleStore() {
    if (db_ == nullptr) return;
    rollbackPending();
    for (auto& [sql, stmt] : statements_) sqlite3_finalize(stmt);
    sqlite3_close_v2(db_);
}

void SqliteSampleStore::fail() {
    throw StoreError(db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory");
}

sqlite3* SqliteSampleStore::database() {
    if (!schemaReady_) openAndPrepareSchema();
    return db_;
}

// Retried by every operation until it succeeds, so a store that was locked or
// unreadable once can recover without a new object.
void SqliteSampleStore::openAndPrepareSchema() {
    if (db_ == nullptr) {
        const int flags = access_ == Access::readOnly ? SQLITE_OPEN_READONLY
                                                      : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        const int result = sqlite3_open_v2(path_.c_str(), &db_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
        if (result != SQLITE_OK) {
            const std::string message = db_ != nullptr ? sqlite3_errmsg(db_) : sqlite3_errstr(result);
            sqlite3_close_v2(db_);
            db_ = nullptr;
            throw StoreError(message);
        }
        sqlite3_busy_timeout(db_, busyTimeoutMilliseconds);
    }
    // SQLite falls back to reading a file it may not write: treat it as read-only.
    if (access_ == Access::readOnly || sqlite3_db_readonly(db_, "main") == 1) {
        // Reading the schema is what tells a database from any other file.
        if (sqlite3_exec(db_, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr) != SQLITE_OK) {
            if (access_ != Access::readOnly || !reopenAsImmutable()) fail();
        }
    } else {
        execute("PRAGMA journal_mode=WAL");
        execute(schemaSql);
    }
    schemaReady_ = true;
}

// A store kept with a write-ahead log cannot be read where its shared-memory
// file cannot be made, as in a folder nobody may write to. Nothing can change
// the store there either, so it is read as it lies.
bool SqliteSampleStore::reopenAsImmutable() {
    if (::access(path_.parent_path().empty() ? "." : path_.parent_path().c_str(), W_OK) == 0) return false;
    sqlite3* immutable = nullptr;
    const int result = sqlite3_open_v2(sqliteFileUri(path_, "mode=ro&immutable=1").c_str(), &immutable,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK ||
        sqlite3_exec(immutable, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr) != SQLITE_OK) {
        sqlite3_close_v2(immutable);
        return false;
    }
    sqlite3_close_v2(db_);
    db_ = immutable;
    return true;
}

void SqliteSampleStore::execute(const char* sql) {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

SqliteSampleStore::Statement SqliteSampleStore::statement(const char* sql) {
    sqlite3* db = database();
    auto found = statements_.find(std::string_view(sql));
    if (found == statements_.end()) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr) != SQLITE_OK) fail();
        found = statements_.emplace(sql, stmt).first;
    }
    return Statement(*this, found->second);
}

void SqliteSampleStore::beginChange() {
    // IMMEDIATE takes the write lock now (waiting out other writers) rather
    // than failing later when a read snapshot turns out stale.
    if (sqlite3_get_autocommit(database()) != 0) execute("BEGIN IMMEDIATE");
}

void SqliteSampleStore::rollbackPending() noexcept {
    if (db_ != nullptr && sqlite3_get_autocommit(db_) == 0) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

template <typename Change>
auto SqliteSampleStore::change(Change&& apply) {
    beginChange();
    try {
        return apply();
    } catch (const StoreError&) {
        rollbackPending();
        throw;
    }
}

std::vector<UsageSample> SqliteSampleStore::fetchAll() {
    auto query = statement(fetchAllSql);
    simdjson::dom::parser parser;
    std::vector<UsageSample> samples;
    while (query.step()) samples.push_back(readSample(query, parser));
    return samples;
}

std::vector<UsageSample> SqliteSampleStore::fetchByDayKey(const std::string& dayKey) {
    auto query = statement(fetchByDayKeySql);
    query.bind(1, dayKey);
    simdjson::dom::parser parser;
    std::vector<UsageSample> samples;
    while (query.step()) samples.push_back(readSample(query, parser));
    return samples;
}

std::string SqliteSampleStore::insert(const UsageSample& sample) {
    return change([&] {
        auto query = statement(insertSampleSql);
        bindSample(query, sample);
        query.run();
        return formatId(sampleIdPrefix, sqlite3_last_insert_rowid(db_));
    });
}

void SqliteSampleStore::update(const UsageSample& sample) {
    const int64_t rowId = sampleRowId(sample.persistentId);
    change([&] {
        auto query = statement(updateSampleSql);
        bindSample(query, sample);
        query.bind(16, rowId).run();
    });
}

void SqliteSampleStore::remove(const std::string& persistentId) {
    const int64_t rowId = sampleRowId(persistentId);
    change([&] { statement("DELETE FROM UsageSample WHERE id=?").bind(1, rowId).run(); });
}

void SqliteSampleStore::save() {
    if (db_ == nullptr || sqlite3_get_autocommit(db_) != 0) return;
    if (sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
        const std::string message = sqlite3_errmsg(db_);
        rollbackPending();
        throw StoreError(message);
    }
}

int64_t SqliteSampleStore::count() {
    auto query = statement("SELECT count(*) FROM UsageSample");
    query.step();
    return query.integer(0);
}

int64_t SqliteSampleStore::count(const SampleSlot& slot) {
    auto query = statement("SELECT count(*) FROM UsageSample WHERE dayKey=? AND tool=?");
    query.bind(1, slot.dayKey).bind(2, slot.tool).step();
    return query.integer(0);
}

std::optional<UsageSample> SqliteSampleStore::newestInSlot(const SampleSlot& slot) {
    auto query = statement(newestInSlotSql);
    query.bind(1, slot.dayKey).bind(2, slot.tool);
    if (!query.step()) return std::nullopt;
    simdjson::dom::parser parser;
    return readSample(query, parser);
}

int64_t SqliteSampleStore::deleteSlotExcept(const SampleSlot& slot, const std::string& keeperId) {
    const int64_t keeperRowId = sampleRowId(keeperId);
    return change([&] {
        statement("DELETE FROM UsageSample WHERE dayKey=? AND tool=? AND id<>?")
            .bind(1, slot.dayKey)
            .bind(2, slot.tool)
            .bind(3, keeperRowId)
            .run();
        return static_cast<int64_t>(sqlite3_changes64(db_));
    });
}

std::vector<SampleSlot> SqliteSampleStore::slotPage(int64_t offset, int64_t limit) {
    auto query = statement("SELECT dayKey, tool FROM UsageSample ORDER BY dayKey, tool, id LIMIT ? OFFSET ?");
    query.bind(1, limit).bind(2, offset);
    std::vector<SampleSlot> slots;
    while (query.step()) slots.push_back(SampleSlot{query.text(0), query.text(1)});
    return slots;
}

std::vector<DayRecord> SqliteSampleStore::fetchDayRecords() {
    auto query = statement(
        "SELECT id, dayKey, \"count\", updatedAt, note, validatedAt, dayType, extraPersonal FROM DayRecord ORDER BY id");
    std::vector<DayRecord> records;
    while (query.step()) {
        DayRecord record;
        record.persistentId = formatId(dayRecordIdPrefix, query.integer(0));
        record.dayKey = query.text(1);
        record.count = query.integer(2);
        record.updatedAt = query.date(3);
        record.note = query.optionalText(4);
        record.validatedAt = query.optionalDate(5);
        record.dayType = query.text(6);
        record.extraPersonal = query.integer(7);
        records.push_back(std::move(record));
    }
    return records;
}

std::string SqliteSampleStore::insertDayRecord(const DayRecord& record) {
    return change([&] {
        statement(
            "INSERT INTO DayRecord (dayKey, \"count\", updatedAt, note, validatedAt, dayType, extraPersonal) "
            "VALUES (?,?,?,?,?,?,?)")
            .bind(1, record.dayKey)
            .bind(2, record.count)
            .bind(3, record.updatedAt)
            .bind(4, record.note)
            .bind(5, record.validatedAt)
            .bind(6, record.dayType)
            .bind(7, record.extraPersonal)
            .run();
        return formatId(dayRecordIdPrefix, sqlite3_last_insert_rowid(db_));
    });
}

Result<std::vector<UsageSample>> readStoredSamples(const std::filesystem::path& storeFile) {
    std::error_code ignored;
    if (!std::filesystem::exists(storeFile, ignored)) return std::vector<UsageSample>{};
    try {
        return SqliteSampleStore(storeFile, SqliteSampleStore::Access::readOnly).fetchAll();
    } catch (const StoreError& error) {
        return failure(unreadableStoreText(error));
    }
}

}  // namespace tallowen
