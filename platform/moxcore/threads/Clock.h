#pragma once

#include <chrono>
#include <functional>

#include "moxcore/Export.h"

namespace moxcore::threads {

/// A time of the system clock, in microseconds.
using TimePoint = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

/// The time now. Any thread.
[[nodiscard]] MOXCORE_API TimePoint Now();

/// Puts `clock` in place of the system's; an empty function brings that back. Waits for calls of
/// the former one. For tests. Any thread; `clock` must neither throw nor call SetClock.
MOXCORE_API void SetClock(std::function<TimePoint()> clock);

}  // namespace moxcore::threads
