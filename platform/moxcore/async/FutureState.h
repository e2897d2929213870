#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "moxcore/async/CancelledException.h"
#include "moxcore/threads/AsyncExecutor.h"

namespace moxcore::async::detail {

template <class T>
using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

template <class T>
class FutureState;

/// What is to happen once a result is there: a link in the chain of the state that will hold it.
template <class T>
class Continuation {
public:
    virtual ~Continuation() = default;

    /// Called once, with itself and the complete state. Must not throw.
    virtual void Run(std::shared_ptr<Continuation> self,
                     std::shared_ptr<FutureState<T>> const& completed) = 0;

private:
    friend class FutureState<T>;
    Continuation* next = nullptr;
    std::shared_ptr<Continuation> owner;  // itself, while it is in a chain
};

/// What a promise and its futures share. Completed once; read-only from then on. Fetching a tree of
/// locations takes tens of thousands of them, so there is no lock in one: the head of its chain of
/// continuations also says whether the result is there.
template <class T>
class FutureState {
public:
    explicit FutureState(std::shared_ptr<threads::AsyncExecutor> executor)
        : executor(std::move(executor)) {}
    virtual ~FutureState() = default;
    FutureState(FutureState const&) = delete;
    FutureState& operator=(FutureState const&) = delete;

    /// Completes `state` with `newValue`, or with `newException` when there is one. False when
    /// somebody else does or has done. Takes a share of its own: a continuation may drop the
    /// promise.
    static bool Complete(std::shared_ptr<FutureState> state,  // NOLINT(performance-*)
                         std::optional<Stored<T>> newValue,
                         std::exception_ptr newException) {  // NOLINT(performance-*)
        if (state->claimed.exchange(true, std::memory_order_relaxed)) return false;
        state->value = std::move(newValue);
        state->exception = std::move(newException);
        auto* const chain = state->head.exchange(state.get(), std::memory_order_acq_rel);
        for (auto* link = OldestFirst(static_cast<Continuation<T>*>(chain)); link != nullptr;) {
            auto* const running = std::exchange(link, link->next);
            running->Run(std::move(running->owner), state);
        }
        return true;
    }

    /// Runs `continuation` on completion, on the completing thread, or at once when that has been.
    static void OnComplete(std::shared_ptr<FutureState> const& state,
                           std::shared_ptr<Continuation<T>> continuation) {
        auto& link = *continuation;
        link.owner = std::move(continuation);
        for (void* first = state->head.load(std::memory_order_acquire); first != state.get();) {
            link.next = static_cast<Continuation<T>*>(first);
            if (state->head.compare_exchange_weak(first, &link, std::memory_order_acq_rel,
                                                  std::memory_order_acquire))
                return;
        }
        link.Run(std::move(link.owner), state);
    }

    static void Wait(std::shared_ptr<FutureState> const& state) {
        if (state->IsComplete()) return;
        auto const sleeper = std::make_shared<Sleeper>();
        OnComplete(state, sleeper);
        sleeper->Sleep();
    }

    [[nodiscard]] bool IsComplete() const { return head.load(std::memory_order_acquire) == this; }

    /// Null until complete.
    [[nodiscard]] std::exception_ptr Exception() const {
        return IsComplete() ? exception : nullptr;
    }

    /// Once complete; throws the exception where there is one.
    [[nodiscard]] Stored<T> const& Value() const {
        if (exception) std::rethrow_exception(exception);
        return *value;
    }

    std::shared_ptr<threads::AsyncExecutor> const executor;

private:
    /// Somebody who waits.
    class Sleeper final : public Continuation<T> {
    public:
        void Run(std::shared_ptr<Continuation<T>> /*self*/,
                 std::shared_ptr<FutureState> const& /*completed*/) override {
            std::lock_guard lock(mutex);
            woken = true;
            wakeUp.notify_one();
        }

        void Sleep() {
            std::unique_lock lock(mutex);
            wakeUp.wait(lock, [this] { return woken; });
        }

    private:
        std::mutex mutex;
        std::condition_variable wakeUp;
        bool woken = false;  // guarded by mutex
    };

    /// The chain turned round: the link attached last is its first.
    static Continuation<T>* OldestFirst(Continuation<T>* newest) {
        Continuation<T>* oldest = nullptr;
        while (newest != nullptr)
            oldest = std::exchange(newest, std::exchange(newest->next, oldest));
        return oldest;
    }

    std::atomic<bool> claimed = false;  // somebody completes it
    std::atomic<void*> head = nullptr;  // the newest continuation; this state once it is complete
    std::optional<Stored<T>> value;     // the completer's; constant once complete
    std::exception_ptr exception;       // likewise
};

}  // namespace moxcore::async::detail
