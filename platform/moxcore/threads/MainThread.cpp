#include "moxcore/threads/MainThread.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/QueuedFunction.h"
#include "moxcore/utility/NoDestructor.h"

namespace moxcore::threads {
namespace {

using Functions = std::vector<QueuedFunction>;
using FailureFunction = std::function<void(std::exception_ptr)>;

struct Queue {
    std::mutex mutex;
    std::condition_variable filled;
    Functions queued;       // guarded by mutex
    bool sleeping = false;  // guarded by mutex: RunUntil waits for `filled`
    std::shared_ptr<std::function<void()> const> wakeUpHook;  // guarded by mutex
    FailureFunction failureObserver;                          // guarded by mutex

    // The main thread's own. A queued function may run the queue itself (a modal dialog's loop
    // does), so what is being run is kept here and not in the call that took it out.
    Functions running;
    std::uint64_t begun = 0;  // functions begun since the start
    std::uint64_t first = 0;  // the place of running.front() in that count
    FailureFunction failureHandler;
};

/// Never destroyed: other threads may still post while the process ends.
Queue& TheQueue() {
    static moxcore::utility::NoDestructor<Queue> queue;
    return *queue;
}

std::atomic<std::thread::id> mainThread{std::this_thread::get_id()};

/// The first thread that runs the queue becomes the main thread.
void ClaimMainThread() {
    static bool const claimed = [] {
        mainThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
        return true;
    }();
    static_cast<void>(claimed);
}

void TraceFailure(std::exception_ptr const& exception) {
    debug::Trace(
        0, "moxcore",
        "A function on the main thread failed: " + config::ExtractMessageFromException(exception));
}

FailureFunction FailureObserver(Queue& queue) {
    std::lock_guard lock(queue.mutex);
    return queue.failureObserver;
}

/// Either function may replace itself, and so is called as a copy.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void TellOfFailure(FailureFunction const function, std::exception_ptr const& exception) {
    if (!function) return TraceFailure(exception);
    try {
        function(exception);
    } catch (...) {
        TraceFailure(exception);
        TraceFailure(std::current_exception());
    }
}

/// Moves what is queued behind what is still to be run.
void TakeQueued(Queue& queue) {
    std::lock_guard lock(queue.mutex);
    if (queue.running.empty()) {
        queue.running.swap(queue.queued);
    } else {
        queue.running.insert(queue.running.end(), std::make_move_iterator(queue.queued.begin()),
                             std::make_move_iterator(queue.queued.end()));
        queue.queued.clear();
    }
}

}  // namespace

void AsyncCallFromMainThread(std::function<void()> function, unsigned) {
    QueueOnMainThread(std::move(function));
}

void QueueOnMainThread(QueuedFunction function) {
    auto& queue = TheQueue();
    std::shared_ptr<std::function<void()> const> hook;
    bool wake = false;
    {
        std::lock_guard lock(queue.mutex);
        if (queue.queued.empty()) {
            hook = queue.wakeUpHook;
            wake = queue.sleeping;
        }
        queue.queued.push_back(std::move(function));
    }
    if (wake) queue.filled.notify_one();
    if (hook && *hook) (*hook)();
}

std::size_t MainThread::RunPending() {
    ClaimMainThread();
    auto& queue = TheQueue();
    TakeQueued(queue);
    std::size_t count = 0;
    for (auto const end = queue.first + queue.running.size(); queue.begun < end; ++count) {
        auto function = std::move(queue.running[queue.begun++ - queue.first]);
        try {
            function();
        } catch (...) {
            TellOfFailure(queue.failureHandler ? queue.failureHandler : FailureObserver(queue),
                          std::current_exception());
        }
    }
    if (queue.begun == queue.first + queue.running.size()) {
        queue.first = queue.begun;
        queue.running.clear();
    }
    return count;
}

void MainThread::RunUntil(std::function<bool()> const& done) {
    ClaimMainThread();
    auto& queue = TheQueue();
    while (!done()) {
        if (RunPending() != 0) continue;
        std::unique_lock lock(queue.mutex);
        queue.sleeping = true;
        queue.filled.wait(lock, [&queue] { return !queue.queued.empty(); });
        queue.sleeping = false;
    }
}

void MainThread::SetWakeUpHook(std::function<void()> hook) {
    auto const shared = std::make_shared<std::function<void()> const>(std::move(hook));
    auto& queue = TheQueue();
    bool waiting = false;
    std::shared_ptr<std::function<void()> const> before;
    {
        std::lock_guard lock(queue.mutex);
        before = std::exchange(queue.wakeUpHook, shared);
        waiting = !queue.queued.empty();
    }
    if (waiting && *shared) (*shared)();
}

void MainThread::SetFailureHandler(std::function<void(std::exception_ptr)> handler) {
    TheQueue().failureHandler = std::move(handler);
}

void MainThread::ReportFailure(std::exception_ptr exception) noexcept {
    try {
        AsyncCallFromMainThread(
            [thrown = std::move(exception)] { TellOfFailure(FailureObserver(TheQueue()), thrown); },
            0);
    } catch (...) {
        // Out of memory: nothing can be reported.
    }
}

void MainThread::SetFailureObserver(std::function<void(std::exception_ptr)> observer) {
    auto& queue = TheQueue();
    std::lock_guard lock(queue.mutex);
    queue.failureObserver.swap(observer);  // the one before is destroyed after the lock
}

bool MainThread::IsCurrent() {
    return mainThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

}  // namespace moxcore::threads
