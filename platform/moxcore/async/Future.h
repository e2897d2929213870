#pragma once

#include <concepts>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "moxcore/async/FutureState.h"
#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"

namespace moxcore::async {

template <class T>
class Promise;

/// The result of an operation that may not have ended yet: a value, a failure (an exception that
/// carries a 32-bit result, see moxcore::config), or a cancellation. Copies share the result. A
/// default-constructed future is empty and may only be assigned to, destroyed and tested. Dropping
/// a future neither stops the operation nor the continuations that were attached. Any thread.
template <class T>
class [[nodiscard]] Future {
public:
    Future() = default;

    /// A future that has already failed with `result` and `message`; continuations that ask for its
    /// executor get `executor`, which may be null.
    static Future CreateFailed(config::Result result, std::string const& message,
                               std::shared_ptr<threads::AsyncExecutor> const& executor) {
        Promise<T> promise(executor);
        promise.SetFailed(result, message);
        return promise.GetFuture();
    }

    [[nodiscard]] explicit operator bool() const noexcept { return state != nullptr; }

    /// Whether the result is there.
    [[nodiscard]] bool IsComplete() const { return state->IsComplete(); }

    /// Sleeps until the result is there. Not on a thread that must not wait.
    void Wait() const { state->Wait(); }

    /// The value; waits for it. Throws what the operation failed with, CancelledException if it was
    /// cancelled.
    [[nodiscard]] auto Get() const -> std::conditional_t<std::is_void_v<T>, void, T> {
        if constexpr (std::is_void_v<T>)
            static_cast<void>(state->Value());
        else
            return state->Value();
    }

    /// What a complete operation failed or was cancelled with; null if it succeeded or has not
    /// ended.
    [[nodiscard]] std::exception_ptr GetException() const { return state->Exception(); }

    /// The executor that the operation belongs to; null when it named none.
    [[nodiscard]] std::shared_ptr<threads::AsyncExecutor> GetExecutor() const {
        return state->executor;
    }

    /// Calls `continuation` with this future once it is complete, on the completing thread, or at
    /// once when it is complete already. The result is the future of what `continuation` returns;
    /// what it throws fails that future.
    template <class F>
    auto Then(F continuation) const {
        return Then(nullptr, std::move(continuation));
    }

    /// As above, but `continuation` runs on `executor`.
    template <class F>
    auto Then(std::shared_ptr<threads::AsyncExecutor> const& executor, F continuation) const {
        static_assert(std::invocable<F&, Future const&>,
                      "The continuation must be callable with the future it continues: "
                      "Then([](Future<T> const& future) { ... future.Get() ... }).");
        static_assert(std::copy_constructible<F>,
                      "The continuation must be copyable: hold what is not through a shared_ptr.");
        using Result = std::invoke_result_t<F&, Future const&>;

        auto promise = std::make_shared<Promise<Result>>(executor ? executor : state->executor);
        Future<Result> result = promise->GetFuture();
        auto run = [self = *this, promise, continuation = std::move(continuation)]() mutable {
            try {
                if constexpr (std::is_void_v<Result>) {
                    continuation(self);
                    promise->SetValue();
                } else {
                    promise->SetValue(continuation(self));
                }
            } catch (...) {
                promise->SetException(std::current_exception());
            }
        };
        if (executor)
            state->OnComplete([executor, run = std::move(run)]() mutable {
                executor->CallAsync(std::move(run));
            });
        else
            state->OnComplete(std::move(run));
        return result;
    }

private:
    friend class Promise<T>;
    explicit Future(std::shared_ptr<detail::FutureState<T>> state) : state(std::move(state)) {}

    std::shared_ptr<detail::FutureState<T>> state;
};

/// The other end of a future: whoever runs the operation completes it here, once; later attempts
/// change nothing and answer false. A promise that is dropped without having been completed cancels
/// its future. Any thread; one instance by one thread at a time.
template <class T>
class Promise {
public:
    explicit Promise(std::shared_ptr<threads::AsyncExecutor> executor = nullptr)
        : state(std::make_shared<detail::FutureState<T>>(std::move(executor))) {}

    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&&) = delete;
    ~Promise() {
        if (state && !state->IsComplete()) Cancel();
    }

    Future<T> GetFuture() const { return Future<T>(state); }

    template <class... V>
    requires std::constructible_from<detail::Stored<T>, V...>
    bool SetValue(V&&... value) {
        return state->Complete(detail::Stored<T>(std::forward<V>(value)...), nullptr);
    }

    bool SetException(std::exception_ptr exception) {
        return state->Complete(std::nullopt, std::move(exception));
    }

    bool SetFailed(config::Result result, std::string const& message) {
        return SetException(std::make_exception_ptr(config::ResultException(result, message)));
    }

    bool Cancel() { return SetException(std::make_exception_ptr(CancelledException())); }

private:
    std::shared_ptr<detail::FutureState<T>> state;
};

}  // namespace moxcore::async
