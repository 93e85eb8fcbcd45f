#pragma once

// What the C interface's opaque handles hold. Shared parts (settings,
// activity stamps, the formatter) are held by every handle that uses them, so
// the caller may free its handles in any order.

#include "activity/AppActivityRecorder.hpp"
#include "app/CloudSyncStatus.hpp"
#include "app/ImportScheduler.hpp"
#include "capi/CallbackLocaleFormatter.hpp"
#include "capi/CallbackSettingsStore.hpp"
#include "import/UsageImporter.hpp"
#include "ui/PanelSession.hpp"

#include <memory>
#include <optional>

struct tw_settings {
    std::shared_ptr<tallowen::capi::CallbackSettingsStore> store;
};

struct tw_formatter {
    std::shared_ptr<tallowen::capi::CallbackLocaleFormatter> formatter;
};

struct tw_activity {
    std::shared_ptr<tallowen::AppActivityRecorder> recorder;
};

struct tw_importer {
    std::shared_ptr<tallowen::capi::CallbackSettingsStore> settings;
    std::shared_ptr<tallowen::AppActivityRecorder> activity;
    std::unique_ptr<tallowen::UsageImporter> importer;
};

struct tw_file_work {
    tallowen::ImportFileWork work;
};

struct tw_purge {
    tallowen::PurgeJob job;
    std::optional<tallowen::Result<int64_t>> outcome;
};

struct tw_sync_status {
    std::shared_ptr<tallowen::capi::CallbackSettingsStore> settings;
    std::unique_ptr<tallowen::CloudSyncStatus> status;
};

struct tw_scheduler {
    tallowen::ImportScheduler scheduler;
};

struct tw_panel_session {
    std::shared_ptr<tallowen::capi::CallbackLocaleFormatter> formatter;
    std::unique_ptr<tallowen::PanelSession> session;
};
