#include "capi/Handles.hpp"

#include <new>

extern "C" {

tw_scheduler* tw_scheduler_create(void) { return new (std::nothrow) tw_scheduler{}; }

void tw_scheduler_free(tw_scheduler* scheduler) { delete scheduler; }

double tw_scheduler_interval_seconds(void) { return tallowen::ImportScheduler::intervalSeconds; }

bool tw_scheduler_start(tw_scheduler* scheduler, double now) {
    return scheduler != nullptr && scheduler->scheduler.start(tallowen::Date{now});
}

bool tw_scheduler_is_started(const tw_scheduler* scheduler) {
    return scheduler != nullptr && scheduler->scheduler.isStarted();
}

bool tw_scheduler_tick(tw_scheduler* scheduler, double now) {
    return scheduler != nullptr && scheduler->scheduler.tick(tallowen::Date{now});
}

bool tw_scheduler_activation_recorded(const tw_scheduler* scheduler) {
    return scheduler != nullptr && scheduler->scheduler.activationRecorded();
}

}  // extern "C"
