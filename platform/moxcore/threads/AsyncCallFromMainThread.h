#pragma once

#include <functional>

#include "moxcore/Export.h"

namespace moxcore::threads {

/// Runs `function` later on the main thread, after everything that was queued before it. Returns at
/// once; never runs it inside the call, not even on the main thread. `flags` is 0; no other value
/// has a meaning. Any thread.
MOXCORE_API void AsyncCallFromMainThread(std::function<void()> function, unsigned flags);

}  // namespace moxcore::threads
