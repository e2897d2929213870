#include "quillocommon/SerialExecutor.h"

#include <utility>

namespace quillocommon {

void SerialExecutor::CallAsync(std::function<void()> function) {
    {
        std::lock_guard lock(mutex);
        functions.push_back(std::move(function));
        if (std::exchange(scheduled, true)) return;
    }
    Schedule();
}

void SerialExecutor::CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) {
    moxcore::threads::GetIOBoundExecutor()->CallAsyncDelayed(
        [self = shared_from_this(), function = std::move(function)] { self->CallAsync(function); },
        delay);
}

/// What the I/O executor runs for the first function. An executor that ends drops what waits; the
/// functions that wait here are dropped with it, since they may be what keeps this alive.
class SerialExecutor::Turn {
public:
    explicit Turn(std::shared_ptr<SerialExecutor> executor) : executor(std::move(executor)) {}
    ~Turn() {
        if (!hasRun) executor->Drop();
    }
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

    void Run() {
        hasRun = true;
        // Also when the function throws, the next one follows.
        struct Next {
            SerialExecutor& executor;
            ~Next() {
                {
                    std::lock_guard lock(executor.mutex);
                    executor.scheduled = !executor.functions.empty();
                    if (!executor.scheduled) return;
                }
                executor.Schedule();
            }
        } const next{*executor};
        executor->RunFirst();
    }

private:
    std::shared_ptr<SerialExecutor> const executor;
    bool hasRun = false;
};

void SerialExecutor::Schedule() {
    auto const turn = std::make_shared<Turn>(shared_from_this());
    moxcore::threads::GetIOBoundExecutor()->CallAsync([turn] { turn->Run(); });
}

void SerialExecutor::Drop() {
    std::deque<std::function<void()>> dropped;  // destroyed after the lock: that may run code
    std::lock_guard lock(mutex);
    dropped.swap(functions);
    scheduled = false;
}

void SerialExecutor::RunFirst() {
    std::function<void()> function;
    {
        std::lock_guard lock(mutex);
        function = std::move(functions.front());
        functions.pop_front();
    }
    function();
}

}  // namespace quillocommon
