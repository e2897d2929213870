#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "moxcore/threads/AsyncExecutor.h"

namespace quillocommon {

/// Runs functions on the I/O executor, one after the other in the order in which they are given:
/// what only they touch needs no lock. Any thread.
class SerialExecutor final : public moxcore::threads::AsyncExecutor,
                             public std::enable_shared_from_this<SerialExecutor> {
public:
    void CallAsync(std::function<void()> function) override;
    void CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) override;

private:
    class Turn;

    void Schedule();
    void RunFirst();
    void Drop();

    std::mutex mutex;
    std::deque<std::function<void()>> functions;  // guarded by mutex
    bool scheduled = false;                       // guarded by mutex: the first is on its way
};

}  // namespace quillocommon
