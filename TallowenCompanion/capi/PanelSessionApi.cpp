#include "capi/CApiText.hpp"
#include "capi/Handles.hpp"
#include "capi/SampleRecordJson.hpp"

#include "ui/PanelFrameJson.hpp"

extern "C" {

tw_panel_session* tw_panel_session_create(tw_formatter* formatter, tw_panel_options options, double started) {
    if (formatter == nullptr) return nullptr;
    try {
        const tallowen::PanelOptions panelOptions{options.shows_cloud_lines, options.has_updater,
                                                  options.shows_login_item};
        auto handle = std::make_unique<tw_panel_session>();
        handle->formatter = formatter->formatter;
        handle->session = std::make_unique<tallowen::PanelSession>(*handle->formatter, tallowen::LocalCalendar{},
                                                                   panelOptions, tallowen::Date{started});
        return handle.release();
    } catch (...) {
        return nullptr;
    }
}

void tw_panel_session_free(tw_panel_session* session) { delete session; }

bool tw_panel_session_samples_reloaded(tw_panel_session* session, const char* samples_json) {
    if (session == nullptr || samples_json == nullptr) return false;
    try {
        session->session->samplesReloaded(tallowen::capi::parseSampleRecords(samples_json));
        return true;
    } catch (...) {
        return false;
    }
}

void tw_panel_session_store_failed(tw_panel_session* session, const char* error_text) {
    if (session == nullptr) return;
    try {
        session->session->storeFailed(tallowen::capi::textOf(error_text));
    } catch (...) {
        // Only an exhausted memory lands here; the panel keeps what it showed.
    }
}

void tw_panel_session_importer_changed(tw_panel_session* session, const tw_importer* importer) {
    if (session == nullptr || importer == nullptr) return;
    try {
        session->session->importerChanged(importer->importer->state());
    } catch (...) {
    }
}

void tw_panel_session_sync_changed(tw_panel_session* session, bool is_syncing, bool has_last_successful_sync,
                                   double last_successful_sync, const char* cloud_environment) {
    if (session == nullptr) return;
    try {
        tallowen::CloudSyncState state;
        state.isSyncing = is_syncing;
        if (has_last_successful_sync) state.lastSuccessfulSync = tallowen::Date{last_successful_sync};
        if (cloud_environment != nullptr) state.cloudEnvironment = std::string(cloud_environment);
        session->session->syncChanged(state);
    } catch (...) {
    }
}

void tw_panel_session_login_item_changed(tw_panel_session* session, bool enabled) {
    if (session != nullptr) session->session->loginItemChanged(enabled);
}

char* tw_panel_session_frame(tw_panel_session* session, double now) {
    if (session == nullptr) return nullptr;
    try {
        return tallowen::capi::ownedText(tallowen::panelFrameJson(session->session->frame(tallowen::Date{now})));
    } catch (...) {
        return nullptr;
    }
}

double tw_panel_session_next_frame_date(const tw_panel_session* session, double now) {
    if (session == nullptr) return now;
    return session->session->nextFrameDate(tallowen::Date{now}).secondsSinceReferenceDate;
}

}  // extern "C"
