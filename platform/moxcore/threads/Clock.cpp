#include "moxcore/threads/Clock.h"

#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include "moxcore/utility/NoDestructor.h"

namespace moxcore::threads {
namespace {

/// The clock that stands in for the system's, if there is one.
struct Replacement {
    std::atomic<bool> isThere{false};  // spares the lock where there is none
    std::shared_mutex mutex;           // held while `clock` is called or replaced
    std::function<TimePoint()> clock;  // guarded by mutex
};

/// Never destroyed: the time is still asked for while the process ends.
Replacement& TheReplacement() {
    static moxcore::utility::NoDestructor<Replacement> replacement;
    return *replacement;
}

}  // namespace

TimePoint Now() {
    auto& replacement = TheReplacement();
    if (replacement.isThere.load(std::memory_order_relaxed)) {
        std::shared_lock const lock(replacement.mutex);
        if (replacement.clock) return replacement.clock();
    }
    return std::chrono::time_point_cast<TimePoint::duration>(std::chrono::system_clock::now());
}

void SetClock(std::function<TimePoint()> clock) {
    auto& replacement = TheReplacement();
    std::unique_lock const lock(replacement.mutex);
    replacement.isThere.store(clock != nullptr, std::memory_order_relaxed);
    std::swap(replacement.clock, clock);  // what the former one held dies after the lock
}

}  // namespace moxcore::threads
