#include "moxcore/threads/AsyncExecutor.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>
#include <vector>

#include "moxcore/config/Error.h"
#include "moxcore/debug/Trace.h"
#include "moxcore/utility/NoDestructor.h"

namespace moxcore::threads {
namespace {

constexpr int kThreads = 4;

/// How long the end of the process waits for functions that are running.
constexpr std::chrono::seconds kPatienceAtExit{1};

/// Blocks every signal in the threads made during its life: signals are the host's to handle.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;

private:
    sigset_t before{};
};

/// Never destroyed, as its threads are not joined: one of them may be waiting for an answer that
/// does not come any more.
class Pool : public AsyncExecutor {
public:
    Pool() {
        SignalsBlocked const blocked;
        for (int i = 0; i < kThreads; ++i)
            std::thread([this] { Work(); }).detach();
    }

    void CallAsync(std::function<void()> function) override {
        CallAsyncDelayed(std::move(function), 0);
    }

    void CallAsyncDelayed(std::function<void()> function, std::uint32_t delay) override {
        auto const due = std::chrono::steady_clock::now() + std::chrono::milliseconds(delay);
        {
            std::lock_guard lock(mutex);
            if (stopped) return;
            calls.push_back({due, nextNumber++, std::move(function)});
            std::push_heap(calls.begin(), calls.end());
        }
        changed.notify_one();
    }

    /// Begins no further function and gives those that run a moment to end. What was waiting stays
    /// where it is: what it owns may be beyond destroying by now.
    void Stop() {
        std::unique_lock lock(mutex);
        stopped = true;
        changed.notify_all();
        idle.wait_for(lock, kPatienceAtExit, [this] { return running == 0; });
    }

private:
    struct Call {
        std::chrono::steady_clock::time_point due;
        std::uint64_t number;  // keeps calls of one time in order
        std::function<void()> function;

        /// The heap has the greatest on top, which is to be the one that is due first.
        bool operator<(Call const& other) const {
            return due != other.due ? due > other.due : number > other.number;
        }
    };

    void Work() {
        std::unique_lock lock(mutex);
        while (!stopped) {
            if (calls.empty()) {
                changed.wait(lock);
            } else if (auto const due = calls.front().due; due > std::chrono::steady_clock::now()) {
                changed.wait_until(lock, due);
            } else {
                RunFirst(lock);
            }
        }
    }

    void RunFirst(std::unique_lock<std::mutex>& lock) {
        std::pop_heap(calls.begin(), calls.end());
        auto function = std::move(calls.back().function);
        calls.pop_back();
        ++running;
        // This thread may have been the one that waited for the next call to become due.
        if (!calls.empty()) changed.notify_one();
        lock.unlock();
        try {
            function();
        } catch (...) {
            debug::Trace(0, "moxcore",
                         "A function on the I/O executor failed: " +
                             config::ExtractMessageFromException(std::current_exception()));
        }
        function = nullptr;
        lock.lock();
        if (--running == 0) idle.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::condition_variable idle;
    std::vector<Call> calls;       // guarded by mutex; a heap
    std::uint64_t nextNumber = 0;  // guarded by mutex
    int running = 0;               // guarded by mutex: functions that run now
    bool stopped = false;          // guarded by mutex
};

std::shared_ptr<AsyncExecutor> const& ThePool() {
    struct StopAtExit {
        Pool& pool;
        ~StopAtExit() { pool.Stop(); }
    };
    static moxcore::utility::NoDestructor<std::shared_ptr<AsyncExecutor>> pool;
    static StopAtExit const stopAtExit{[]() -> Pool& {
        auto made = std::make_shared<Pool>();
        *pool = made;
        return *made;
    }()};
    return *pool;
}

struct ExecutorSlot {
    std::mutex mutex;
    std::shared_ptr<AsyncExecutor> replacement;  // guarded by mutex; null: the pool
};

/// Never destroyed: executors are still asked for while the process ends.
ExecutorSlot& Slot() {
    static moxcore::utility::NoDestructor<ExecutorSlot> slot;
    return *slot;
}

}  // namespace

AsyncExecutor::~AsyncExecutor() = default;

std::shared_ptr<AsyncExecutor> GetIOBoundExecutor() {
    {
        auto& slot = Slot();
        std::lock_guard lock(slot.mutex);
        if (slot.replacement) return slot.replacement;
    }
    return ThePool();
}

void SetIOBoundExecutor(std::shared_ptr<AsyncExecutor> executor) {
    auto& slot = Slot();
    std::lock_guard lock(slot.mutex);
    slot.replacement.swap(executor);
}

}  // namespace moxcore::threads
