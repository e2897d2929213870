#include "service/http/Pace.h"

namespace quilloservice::http {

bool Pace::HasEnough() const {
    using Milliseconds = std::chrono::milliseconds;
    auto average = std::chrono::duration_cast<Milliseconds>(rule_.average).count();
    return bytes_ >= rule_.bytesPerSecond * average / 1000;
}

Time Pace::BeginWait(Time now) {
    waitBegan_ = now;
    Duration left = rule_.average - waited_;
    return now + (HasEnough() ? left + rule_.average : left);
}

bool Pace::EndWait(std::int64_t bytes, Time now) {
    waited_ += now - waitBegan_;
    if (waited_ >= rule_.average) {
        // What came last counts for this window: it is what ended the wait.
        bytes_ += bytes;
        bool enough = HasEnough();
        waited_ = {};
        bytes_ = 0;
        return enough;
    }
    bytes_ += bytes;
    return true;
}

}  // namespace quilloservice::http
