#pragma once

#include "import/ImporterState.hpp"
#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageSample.hpp"
#include "ui/CountingText.hpp"
#include "ui/LocaleFormatter.hpp"
#include "ui/MenuModel.hpp"
#include "ui/PanelFrame.hpp"
#include "ui/PanelFrameJson.hpp"
#include "ui/TypewriterTitle.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// What the shell offers beside the panel's figures.
struct PanelOptions {
    // The cloud warning and the footer's sync line (the Mac application).
    bool showsCloudLines = false;
    // The update button shows only when an updater exists.
    bool hasUpdater = false;
    // The launch-at-login checkbox.
    bool showsLoginItem = false;
};

// The panel of one shell, from the events the shell forwards to the frames it
// draws. Every decision lives here: what the importer's state shows, which
// texts and roles each section takes, the cleaning view, the typed title, the
// token counter's bookkeeping and the one-second refresh of texts that follow
// the clock (times of day, reset delays). The shell only lays frames out.
//
// Used from one thread. The formatter must outlive the session.
class PanelSession {
public:
    // `started`: when the title begins to type.
    PanelSession(const LocaleFormatter& formatter, const LocalCalendar& calendar, PanelOptions options, Date started);

    // The store's samples, as read; a failure read before is forgotten.
    void samplesReloaded(std::vector<UsageSample> samples);
    // The store could not be read: the panel keeps the samples it had and
    // shows `errorText` where the importer's last error goes, unless the
    // importer has one of its own.
    void storeFailed(std::string errorText);
    void importerChanged(const ImporterState& state);
    void syncChanged(const CloudSyncState& state);
    void loginItemChanged(bool enabled);

    // Everything the shell draws at `now`. The counter appears on its first
    // frame and moves to each new value of today's tokens from then on.
    PanelFrame frame(Date now);
    // The panel drawn once and left alone (a command that prints it): the
    // title at rest on the wordmark with its cursor, the counter on today's
    // true value. Leaves the counter's bookkeeping untouched.
    PanelFrame frameAtRest(Date now);
    // When something on screen next changes: the title, the counter, or the
    // one-second refresh; never before `now`.
    Date nextFrameDate(Date now) const;

    // The figures the last frame was built from.
    const MenuModel& model() const { return model_; }

private:
    void refreshModel(Date now);
    CountingText counter() const;
    PanelFrame frameWith(RoledText title, PanelCounter counter, Date now) const;

    const LocaleFormatter& formatter_;
    LocalCalendar calendar_;
    PanelOptions options_;
    Date started_;
    std::vector<TypewriterFrame> timeline_;

    std::vector<UsageSample> samples_;
    std::optional<std::string> storeError_;
    ImporterState importer_;
    CloudSyncState sync_;
    bool loginItemEnabled_ = false;

    MenuModel model_;
    std::optional<Date> modelComputedAt_;
    bool modelStale_ = true;
    CountingAnchor anchor_;
};

}  // namespace tallowen
