#include "capi/CApiText.hpp"
#include "capi/CallbackSampleStore.hpp"
#include "capi/Handles.hpp"

#include "import/ImportReportJson.hpp"
#include "base/JsonWriter.hpp"

namespace {

using tallowen::JsonWriter;

void writeOptionalNumber(JsonWriter& out, std::string_view key, std::optional<double> value) {
    out.key(key);
    if (value) out.number(*value);
    else out.null();
}

std::string stateJson(const tallowen::UsageImporter& importer) {
    JsonWriter out;
    out.beginObject();
    out.key("isImporting").boolean(importer.isImporting());
    const auto lastImport = importer.lastImport();
    writeOptionalNumber(out, "lastImport",
                        lastImport ? std::optional<double>(lastImport->secondsSinceReferenceDate) : std::nullopt);
    out.key("lastError");
    if (importer.lastError()) out.string(*importer.lastError());
    else out.null();
    out.key("detectedTools").beginArray();
    for (const tallowen::UsageTool tool : importer.detectedTools()) out.string(tallowen::rawValue(tool));
    out.endArray();
    out.key("todaySessions").integer(importer.todaySessions());
    out.key("todayTokens").integer(importer.todayTokens());
    out.key("todayCostCents").integer(importer.todayCostCents());
    writeOptionalNumber(out, "purgeProgress", importer.purgeProgress());
    out.endObject();
    return out.take();
}

}  // namespace

extern "C" {

tw_importer* tw_importer_create(const char* home_folder, const char* support_folder, tw_settings* settings,
                                tw_store_opener opener, tw_activity* activity) {
    // The opener's context is the engine's from here on, even when creation fails.
    tallowen::SampleStoreOpener openStore;
    try {
        openStore = tallowen::capi::callbackStoreOpener(opener);
    } catch (...) {
        if (opener.release != nullptr) opener.release(opener.context);
        return nullptr;
    }
    if (home_folder == nullptr || support_folder == nullptr || settings == nullptr || activity == nullptr)
        return nullptr;
    try {
        tallowen::EngineEnvironment environment;
        environment.homeFolder = home_folder;
        environment.supportFolder = support_folder;
        environment.clock = tallowen::systemClock();
        auto handle = std::make_unique<tw_importer>();
        handle->settings = settings->store;
        handle->activity = activity->recorder;
        handle->importer = std::make_unique<tallowen::UsageImporter>(std::move(environment), std::move(openStore),
                                                                     *handle->settings, *handle->activity);
        return handle.release();
    } catch (...) {
        return nullptr;
    }
}

void tw_importer_free(tw_importer* importer) { delete importer; }

char* tw_importer_state(const tw_importer* importer) {
    if (importer == nullptr) return nullptr;
    try {
        return tallowen::capi::ownedText(stateJson(*importer->importer));
    } catch (...) {
        return nullptr;
    }
}

tw_file_work* tw_importer_begin(tw_importer* importer) {
    if (importer == nullptr) return nullptr;
    try {
        tallowen::ImportRunReport::Outcome outcome;
        std::optional<tallowen::ImportFileWork> work = importer->importer->beginRun(outcome);
        if (!work) return nullptr;
        return new tw_file_work{std::move(*work)};
    } catch (...) {
        return nullptr;
    }
}

void tw_file_work_run(tw_file_work* work) {
    // ImportFileWork::run turns every failure of its own into a value.
    if (work != nullptr) work->work.run();
}

void tw_file_work_free(tw_file_work* work) { delete work; }

tw_purge* tw_importer_files_read(tw_importer* importer, tw_file_work* work) {
    std::unique_ptr<tw_file_work> owned(work);
    if (importer == nullptr || !owned) return nullptr;
    try {
        std::optional<tallowen::PurgeJob> job = importer->importer->filesRead(std::move(owned->work));
        if (!job) return nullptr;
        return new tw_purge{std::move(*job), std::nullopt};
    } catch (...) {
        return nullptr;
    }
}

void tw_purge_run(tw_purge* purge, void (*progress)(void* context, double fraction), void* context) {
    if (purge == nullptr) return;
    try {
        purge->outcome = purge->job.run([progress, context](double fraction) {
            if (progress != nullptr) progress(context, fraction);
        });
    } catch (...) {
        // Only an exhausted memory lands here: the purge counts as not run and is due again.
        purge->outcome.reset();
    }
}

void tw_purge_free(tw_purge* purge) { delete purge; }

void tw_importer_purge_progressed(tw_importer* importer, double fraction) {
    if (importer != nullptr) importer->importer->purgeProgressed(fraction);
}

char* tw_importer_finish(tw_importer* importer, tw_purge* purge) {
    std::unique_ptr<tw_purge> owned(purge);
    if (importer == nullptr) return nullptr;
    try {
        std::optional<tallowen::Result<int64_t>> outcome;
        if (owned) outcome = std::move(owned->outcome);
        const tallowen::ImportRunReport report = importer->importer->completeRun(std::move(outcome));
        return tallowen::capi::ownedText(tallowen::importReportJson(report));
    } catch (...) {
        return nullptr;
    }
}

}  // extern "C"
