#include "app/ImportScheduler.hpp"

#include <cmath>

namespace tallowen {

bool ImportScheduler::start(Date now) {
    if (nextDeadline_) return false;
    nextDeadline_ = now.addingSeconds(intervalSeconds);
    return true;
}

bool ImportScheduler::tick(Date now) {
    if (!nextDeadline_) return false;
    const double late = now.secondsSince(*nextDeadline_);
    if (late < -intervalSeconds) {
        nextDeadline_ = now.addingSeconds(intervalSeconds);
        return false;
    }
    if (late < 0) return false;
    const double missedBeats = std::floor(late / intervalSeconds) + 1;
    nextDeadline_ = nextDeadline_->addingSeconds(missedBeats * intervalSeconds);
    return true;
}

}  // namespace tallowen
