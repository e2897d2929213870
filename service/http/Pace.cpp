#include "service/http/Pace.h"

namespace quilloservice::http {

bool Pace::HasEnough() const {
    using Milliseconds = std::chrono::milliseconds;
    auto average = std::chrono::duration_cast<Milliseconds>(rule.average).count();
    return bytes >= rule.bytesPerSecond * average / 1000;
}

Time Pace::BeginWait(Time now) {
    waitBegan = now;
    Duration left = rule.average - waited;
    return now + (HasEnough() ? left + rule.average : left);
}

bool Pace::EndWait(std::int64_t moved, Time now) {
    waited += now - waitBegan;
    if (waited >= rule.average) {
        // The bytes that ended the wait belong to this period.
        bytes += moved;
        bool enough = HasEnough();
        waited = {};
        bytes = 0;
        return enough;
    }
    bytes += moved;
    return true;
}

}  // namespace quilloservice::http
