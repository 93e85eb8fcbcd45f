/* The engine's C interface, for the Mac app's Swift core.
 *
 * Conventions:
 * - Text is UTF-8 and NUL-terminated. Text the API returns (char *) belongs to
 *   the caller, who frees it with tw_string_free; a NULL return means "none".
 * - Dates are seconds since 2001-01-01T00:00:00Z, as doubles.
 * - A sample crosses as a JSON object with the UsageSample keys ("dayKey",
 *   "tool", "sessions", "requests", "inputTokens", "outputTokens",
 *   "episodeHours", "estimatedCostCents", "estimatedWaterMilliliters",
 *   "quotaPrimaryPercent", "quotaPrimaryResetAt", "quotaSecondaryPercent",
 *   "quotaSecondaryResetAt", "quotaPlan", "updatedAt") plus "id", the
 *   persistent identifier as text. Optional values are null or left out.
 * - Nothing crosses back as an exception: failures are values.
 * - A handle is used from one thread at a time. Functions marked "any thread"
 *   work on values that own everything they touch.
 * - The caller's tables (settings, store, formatter) are called back with
 *   their context; the engine calls `release` once when it no longer needs a
 *   context.
 */
#ifndef TALLOWEN_CAPI_TALLOWEN_H
#define TALLOWEN_CAPI_TALLOWEN_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void tw_string_free(char *text);

/* ---- Replies: how a callback hands its answer back ------------------------ */

/* Valid only during the callback that receives it. */
typedef struct tw_reply tw_reply;

void tw_reply_text(tw_reply *reply, const char *text, size_t length);
void tw_reply_integer(tw_reply *reply, int64_t value);
/* The operation failed; the description is what the user is shown. */
void tw_reply_failure(tw_reply *reply, const char *description);

/* ---- Settings: the user-defaults keys ------------------------------------ */

typedef struct tw_settings_callbacks {
    void *context;
    bool (*bool_value)(void *context, const char *key); /* false when absent */
    void (*set_bool)(void *context, const char *key, bool value);
    /* False when absent or not a date. */
    bool (*date_value)(void *context, const char *key, double *date);
    void (*set_date)(void *context, const char *key, double date);
    void (*release)(void *context); /* may be NULL */
} tw_settings_callbacks;

typedef struct tw_settings tw_settings;

tw_settings *tw_settings_create(tw_settings_callbacks callbacks);
/* Handles made with the settings keep them alive as long as they need them. */
void tw_settings_free(tw_settings *settings);

/* ---- Sample store: one open store (a context on the container) ------------ */

/* Every operation answers through its reply: the text or integer named, or a
 * failure. Changes stay pending until `save`. */
typedef struct tw_store_callbacks {
    void *context;
    void (*fetch_all)(void *context, tw_reply *reply);                      /* text: JSON array */
    void (*fetch_day)(void *context, const char *day_key, tw_reply *reply); /* text: JSON array */
    void (*insert)(void *context, const char *sample_json, tw_reply *reply); /* text: the new id */
    void (*update)(void *context, const char *sample_json, tw_reply *reply); /* by "id" */
    void (*remove)(void *context, const char *id, tw_reply *reply);
    void (*save)(void *context, tw_reply *reply);
    void (*count)(void *context, tw_reply *reply); /* integer */
    void (*count_slot)(void *context, const char *day_key, const char *tool, tw_reply *reply); /* integer */
    /* text: the slot's sample with the latest updatedAt, or no text at all when the slot is empty */
    void (*newest_in_slot)(void *context, const char *day_key, const char *tool, tw_reply *reply);
    /* Store-side delete of the slot's samples but `keeper_id`; integer: how many. */
    void (*delete_slot_except)(void *context, const char *day_key, const char *tool, const char *keeper_id,
                               tw_reply *reply);
    /* text: JSON array of {"dayKey","tool"}, sorted by day key then tool, `limit` from `offset` */
    void (*slot_page)(void *context, int64_t offset, int64_t limit, tw_reply *reply);
    void (*release)(void *context); /* the store is closed; unsaved changes are dropped */
} tw_store_callbacks;

/* Opens a fresh store each time; called on the thread that will use it. */
typedef struct tw_store_opener {
    void *context;
    /* Fills `store` and returns true, or replies a failure and returns false. */
    bool (*open)(void *context, tw_store_callbacks *store, tw_reply *reply);
    void (*release)(void *context); /* may be NULL */
} tw_store_opener;

/* ---- Formatter: numbers, money, relative times, upper case ----------------- */

typedef enum tw_time_unit {
    TW_TIME_UNIT_SECOND = 0,
    TW_TIME_UNIT_MINUTE = 1,
    TW_TIME_UNIT_HOUR = 2,
    TW_TIME_UNIT_DAY = 3,
    TW_TIME_UNIT_WEEK = 4,
    TW_TIME_UNIT_MONTH = 5,
    TW_TIME_UNIT_YEAR = 6
} tw_time_unit;

/* The engine chooses every number and unit; the formatter only writes them
 * the locale's way. */
typedef struct tw_formatter_callbacks {
    void *context;
    void (*decimal_separator)(void *context, tw_reply *reply);
    void (*decimal)(void *context, double value, int32_t fraction_digits, tw_reply *reply);
    void (*grouped_integer)(void *context, int64_t value, tw_reply *reply);
    void (*us_dollars)(void *context, double dollars, int32_t fraction_digits, tw_reply *reply);
    /* `count` units ago, with the named form where the language has one ("hier"). */
    void (*time_ago)(void *context, int64_t count, tw_time_unit unit, tw_reply *reply);
    void (*short_time)(void *context, double date, tw_reply *reply);
    void (*upper_cased)(void *context, const char *text, tw_reply *reply);
    void (*release)(void *context); /* may be NULL */
} tw_formatter_callbacks;

typedef struct tw_formatter tw_formatter;

tw_formatter *tw_formatter_create(tw_formatter_callbacks callbacks);
void tw_formatter_free(tw_formatter *formatter);
/* The menu's texts for these figures, made through the formatter, as a JSON
 * object: {"tokens": "206 k", "cost": "3,50 $US", "water": "0,4 L"}. */
char *tw_formatter_menu_texts(const tw_formatter *formatter, int64_t tokens, int64_t cost_cents,
                              int64_t water_milliliters);

/* ---- App activity: activation stamps of the desktop chat apps -------------- */

typedef struct tw_activity tw_activity;

/* Stamps kept in "app-activations.json" in `support_folder`. */
tw_activity *tw_activity_create(const char *support_folder);
void tw_activity_free(tw_activity *activity);
/* True when a stamp was recorded (a watched app, not a repeat within 60 s):
 * an import should be requested. */
bool tw_activity_record(tw_activity *activity, const char *bundle_identifier, double now);
/* JSON array of the watched bundle identifiers. */
char *tw_activity_watched_bundle_identifiers(void);

/* ---- Import run ------------------------------------------------------------- */

typedef struct tw_importer tw_importer;
typedef struct tw_file_work tw_file_work;
typedef struct tw_purge tw_purge;

/* The engine on a home folder and a support folder. It keeps `settings` and
 * `activity` alive; it opens stores through `opener` for every run. */
tw_importer *tw_importer_create(const char *home_folder, const char *support_folder, tw_settings *settings,
                                tw_store_opener opener, tw_activity *activity);
void tw_importer_free(tw_importer *importer);

/* The published properties as a JSON object: isImporting, lastImport,
 * lastError, detectedTools (raw values), todaySessions, todayTokens,
 * todayCostCents, purgeProgress. */
char *tw_importer_state(const tw_importer *importer);

/* A run, in steps:
 * 1. tw_importer_begin (importer's thread): NULL when the request is dropped
 *    (a run is under way). Otherwise the run's file work.
 * 2. tw_file_work_run (any thread, once): load the import state, read the
 *    logs, save the state.
 * 3. tw_importer_files_read (importer's thread) takes the file work back and
 *    frees it; it gives the one-time purge, or NULL when it is not due.
 *    tw_purge_run (any thread, once) opens its own store and reports progress
 *    from that thread; hand each fraction to tw_importer_purge_progressed on
 *    the importer's thread.
 * 4. tw_importer_finish (importer's thread): writes the samples, publishes,
 *    frees the purge (NULL when there was none), and returns the run's report
 *    as JSON, the object `tallowen import --json` prints (outcome,
 *    detectedTools, the sample and file counts, elapsedSeconds, lastError). */
tw_file_work *tw_importer_begin(tw_importer *importer);
void tw_file_work_run(tw_file_work *work);
tw_purge *tw_importer_files_read(tw_importer *importer, tw_file_work *work);
void tw_purge_run(tw_purge *purge, void (*progress)(void *context, double fraction), void *context);
void tw_importer_purge_progressed(tw_importer *importer, double fraction);
char *tw_importer_finish(tw_importer *importer, tw_purge *purge);
/* For a run abandoned before tw_importer_finish. */
void tw_file_work_free(tw_file_work *work);
void tw_purge_free(tw_purge *purge);

/* ---- Cloud sync status ------------------------------------------------------- */

typedef enum tw_cloud_event_kind {
    TW_CLOUD_EVENT_SETUP = 0,
    TW_CLOUD_EVENT_IMPORT = 1,
    TW_CLOUD_EVENT_EXPORT = 2,
    TW_CLOUD_EVENT_OTHER = 3
} tw_cloud_event_kind;

typedef struct tw_cloud_event {
    tw_cloud_event_kind kind;
    bool has_end_date; /* false: the event has just started */
    double end_date;
    bool succeeded;
    const char *error_description; /* NULL when the event carries no error */
} tw_cloud_event;

typedef struct tw_sync_status tw_sync_status;

/* Reads "cloudSync.lastSuccessAt" from `settings`, which it keeps alive. */
tw_sync_status *tw_sync_status_create(tw_settings *settings);
void tw_sync_status_free(tw_sync_status *status);
void tw_sync_status_apply(tw_sync_status *status, const tw_cloud_event *event);
/* False when there has been no success. */
bool tw_sync_status_last_successful_sync(const tw_sync_status *status, double *date);
char *tw_sync_status_last_error_description(const tw_sync_status *status);
bool tw_sync_status_is_syncing(const tw_sync_status *status);
int64_t tw_sync_status_pending_count(const tw_sync_status *status);

/* ---- Import scheduler policy ---------------------------------------------- */

typedef struct tw_scheduler tw_scheduler;

tw_scheduler *tw_scheduler_create(void);
void tw_scheduler_free(tw_scheduler *scheduler);
/* How often the shell's repeating timer should fire. */
double tw_scheduler_interval_seconds(void);
/* True (request an import now) on the first start only. */
bool tw_scheduler_start(tw_scheduler *scheduler, double now);
bool tw_scheduler_is_started(const tw_scheduler *scheduler);
/* True when the 15-second timer has fired by `now`. */
bool tw_scheduler_tick(tw_scheduler *scheduler, double now);
/* The activity watcher recorded a stamp: true when an import is to be requested. */
bool tw_scheduler_activation_recorded(const tw_scheduler *scheduler);

/* ---- Start-up decisions -------------------------------------------------- */

/* True on the first launch only ("loginItemRegistered" is set before it
 * answers): the caller then registers the login item and ignores a failure. */
bool tw_claim_login_item_registration(tw_settings *settings);
/* The first-launch notice as JSON ({"delaySeconds", "messageText",
 * "informativeText", "buttonTitle"}) on the first launch only
 * ("firstLaunchNoticeShown" set first); NULL afterwards. */
char *tw_claim_first_launch_notice(tw_settings *settings);
/* Whether the store follows the private cloud database. */
bool tw_uses_cloud_database(bool task_available, bool has_cloud_services_entitlement);

typedef enum tw_login_item_status {
    TW_LOGIN_ITEM_NOT_REGISTERED = 0,
    TW_LOGIN_ITEM_ENABLED = 1,
    TW_LOGIN_ITEM_REQUIRES_APPROVAL = 2,
    TW_LOGIN_ITEM_NOT_FOUND = 3
} tw_login_item_status;

/* Whether the launch-at-login checkbox reads as ticked. */
bool tw_login_item_enabled(tw_login_item_status status);

/* ---- Panel session: events in, frames out --------------------------------- */

typedef struct tw_panel_options {
    bool shows_cloud_lines;
    bool has_updater;
    bool shows_login_item;
} tw_panel_options;

typedef struct tw_panel_session tw_panel_session;

/* The session keeps the formatter alive; `started` is when the title begins to type. */
tw_panel_session *tw_panel_session_create(tw_formatter *formatter, tw_panel_options options, double started);
void tw_panel_session_free(tw_panel_session *session);
/* The store's samples as a JSON array of samples; false, changing nothing,
 * when the text is not one. */
bool tw_panel_session_samples_reloaded(tw_panel_session *session, const char *samples_json);
/* A failed read of the store: its text stands where the last error goes. */
void tw_panel_session_store_failed(tw_panel_session *session, const char *error_text);
/* The importer's published state, read from the importer itself. */
void tw_panel_session_importer_changed(tw_panel_session *session, const tw_importer *importer);
/* `cloud_environment`: the entitlement's value, NULL when unknown. */
void tw_panel_session_sync_changed(tw_panel_session *session, bool is_syncing, bool has_last_successful_sync,
                                   double last_successful_sync, const char *cloud_environment);
void tw_panel_session_login_item_changed(tw_panel_session *session, bool enabled);
/* Everything the shell draws at `now`, as the panel frame's JSON. */
char *tw_panel_session_frame(tw_panel_session *session, double now);
/* When something on screen next changes, never before `now`. */
double tw_panel_session_next_frame_date(const tw_panel_session *session, double now);

#ifdef __cplusplus
}
#endif

#endif /* TALLOWEN_CAPI_TALLOWEN_H */
