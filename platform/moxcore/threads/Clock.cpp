#include "moxcore/threads/Clock.h"

#include "moxcore/utility/NoDestructor.h"

namespace moxcore::threads {
namespace {

/// The clock that stands in for the system's; empty: none does. Never destroyed: the time is still
/// asked for while the process ends.
std::function<TimePoint()>& Replacement() {
    static moxcore::utility::NoDestructor<std::function<TimePoint()>> replacement;
    return *replacement;
}

}  // namespace

TimePoint Now() {
    if (auto const& replacement = Replacement()) return replacement();
    return std::chrono::time_point_cast<TimePoint::duration>(std::chrono::system_clock::now());
}

void SetClock(std::function<TimePoint()> clock) {
    Replacement() = std::move(clock);
}

}  // namespace moxcore::threads
