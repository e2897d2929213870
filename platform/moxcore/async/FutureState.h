#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "moxcore/async/CancelledException.h"
#include "moxcore/threads/AsyncExecutor.h"

namespace moxcore::async::detail {

template <class T>
using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

/// What a promise and its futures share. Completed once; read-only from then on.
template <class T>
class FutureState {
public:
    explicit FutureState(std::shared_ptr<threads::AsyncExecutor> executor)
        : executor(std::move(executor)) {}

    /// Completes with `newValue`, or with `newException` when there is one. False when already
    /// complete.
    bool Complete(std::optional<Stored<T>> newValue, std::exception_ptr newException) {
        std::vector<std::function<void()>> waiting;
        {
            std::lock_guard lock(mutex);
            if (complete) return false;
            value = std::move(newValue);
            exception = std::move(newException);
            complete = true;
            waiting.swap(continuations);
        }
        completed.notify_all();
        for (auto& continuation : waiting)
            continuation();
        return true;
    }

    /// Runs `continuation` on completion, on the completing thread, or at once when that has been.
    void OnComplete(std::function<void()> continuation) {
        {
            std::lock_guard lock(mutex);
            if (!complete) {
                continuations.push_back(std::move(continuation));
                return;
            }
        }
        continuation();
    }

    [[nodiscard]] bool IsComplete() const {
        std::lock_guard lock(mutex);
        return complete;
    }

    void Wait() const {
        std::unique_lock lock(mutex);
        completed.wait(lock, [this] { return complete; });
    }

    [[nodiscard]] std::exception_ptr Exception() const {
        std::lock_guard lock(mutex);
        return exception;
    }

    /// Waits; throws the exception where there is one.
    [[nodiscard]] Stored<T> const& Value() const {
        Wait();
        if (exception) std::rethrow_exception(exception);
        return *value;
    }

    std::shared_ptr<threads::AsyncExecutor> const executor;

private:
    mutable std::mutex mutex;
    mutable std::condition_variable completed;
    bool complete = false;           // guarded by mutex
    std::optional<Stored<T>> value;  // guarded by mutex until complete, then constant
    std::exception_ptr exception;    // likewise
    std::vector<std::function<void()>> continuations;  // guarded by mutex
};

}  // namespace moxcore::async::detail
