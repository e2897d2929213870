#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "moxcore/Export.h"

namespace moxcore::threads {

/// Runs functions, now or later, somewhere else than in the call. Any thread.
class MOXCORE_API AsyncExecutor {
public:
    virtual ~AsyncExecutor();

    /// Runs `function` once, as soon as there is a thread for it.
    virtual void CallAsync(std::function<void()> function) = 0;

    /// Runs `function` once, not before `delay` milliseconds have passed.
    virtual void CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) = 0;
};

/// The process's executor for work that mostly waits: a small pool of threads, made on first use.
/// What a function throws is traced (category "moxcore") and goes no further. Its threads take no
/// signals. Work that is still waiting when the process ends is dropped; work that is running gets
/// a second to end.
[[nodiscard]] MOXCORE_API std::shared_ptr<AsyncExecutor> GetIOBoundExecutor();

/// Puts `executor` in place of the pool for those who ask from now on; null brings the pool back.
/// For tests.
MOXCORE_API void SetIOBoundExecutor(std::shared_ptr<AsyncExecutor> executor);

}  // namespace moxcore::threads
