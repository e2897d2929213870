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

void SerialExecutor::Schedule() {
    moxcore::threads::GetIOBoundExecutor()->CallAsync([self = shared_from_this()] {
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
        } const next{*self};
        self->RunFirst();
    });
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
