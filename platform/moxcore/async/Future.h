#pragma once

#include <concepts>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "moxcore/async/FutureState.h"
#include "moxcore/config/Error.h"
#include "moxcore/threads/AsyncExecutor.h"

namespace moxcore::async {

template <class T>
class Promise;

namespace detail {
template <class T, class Function>
class Continued;
template <class T, class Function>
class Listener;
}  // namespace detail

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
    void Wait() const { State::Wait(state); }

    /// The value; waits for it. Throws what the operation failed with, CancelledException if it was
    /// cancelled.
    [[nodiscard]] auto Get() const -> std::conditional_t<std::is_void_v<T>, void, T> {
        Wait();
        if constexpr (std::is_void_v<T>)
            static_cast<void>(state->Value());
        else
            return state->Value();
    }

    /// As Get, but the value where it lies, for as long as this future is held.
    [[nodiscard]] detail::Stored<T> const& Peek() const {
        Wait();
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
        return Continue(std::make_shared<detail::Continued<T, F>>(state->executor, false,
                                                                  std::move(continuation)));
    }

    /// As above, but `continuation` runs on `executor`.
    template <class F>
    auto Then(std::shared_ptr<threads::AsyncExecutor> const& executor, F continuation) const {
        return Continue(std::make_shared<detail::Continued<T, F>>(
            executor ? executor : state->executor, executor != nullptr, std::move(continuation)));
    }

    /// As Then, without a further future: what `continuation` throws is dropped.
    template <class F>
    void OnComplete(F continuation) const {
        State::OnComplete(state, std::make_shared<detail::Listener<T, F>>(std::move(continuation)));
    }

private:
    using State = detail::FutureState<T>;
    friend class Promise<T>;
    template <class U>
    friend class Future;
    template <class U, class Function>
    friend class detail::Continued;
    template <class U, class Function>
    friend class detail::Listener;

    explicit Future(std::shared_ptr<State> state) : state(std::move(state)) {}

    template <class Continued>
    auto Continue(std::shared_ptr<Continued> continued) const {
        Future<typename Continued::Result> result(continued);
        State::OnComplete(state, std::move(continued));
        return result;
    }

    std::shared_ptr<State> state;
};

/// The producer's end of a future: the operation completes it here, once; later attempts change
/// nothing and return false. A promise that is dropped without having been completed cancels
/// its future. Any thread; one instance by one thread at a time.
template <class T>
class Promise {
public:
    explicit Promise(std::shared_ptr<threads::AsyncExecutor> executor = nullptr)
        : state(std::make_shared<State>(std::move(executor))) {}

    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&&) = delete;
    ~Promise() {
        if (state && !state->IsComplete()) Cancel();
    }

    Future<T> GetFuture() const { return Future<T>(state); }

    template <class... V>
    requires std::constructible_from<detail::Stored<T>, V...>
    bool SetValue(V&&... value) {
        return State::Complete(state, detail::Stored<T>(std::forward<V>(value)...), nullptr);
    }

    bool SetException(std::exception_ptr exception) {
        return State::Complete(state, std::nullopt, std::move(exception));
    }

    bool SetFailed(config::Result result, std::string const& message) {
        return SetException(std::make_exception_ptr(config::ResultException(result, message)));
    }

    bool Cancel() { return SetException(std::make_exception_ptr(CancelledException())); }

private:
    using State = detail::FutureState<T>;
    template <class U, class Function>
    friend class detail::Continued;
    explicit Promise(std::shared_ptr<State>&& state) : state(std::move(state)) {}

    std::shared_ptr<State> state;
};

namespace detail {

/// A continuation of a T, and in one with it the state of what it makes of that.
template <class T, class Function>
class Continued final : public FutureState<std::invoke_result_t<Function&, Future<T> const&>>,
                        public Continuation<T> {
    static_assert(std::invocable<Function&, Future<T> const&>,
                  "The continuation must be callable with the future it continues: "
                  "Then([](Future<T> const& future) { ... future.Get() ... }).");

public:
    using Result = std::invoke_result_t<Function&, Future<T> const&>;

    /// `elsewhere`: the function runs on `executor`, and not on the completing thread.
    Continued(std::shared_ptr<threads::AsyncExecutor> executor, bool elsewhere, Function function)
        : FutureState<Result>(std::move(executor)),
          elsewhere(elsewhere),
          function(std::move(function)) {}

    void Run(std::shared_ptr<Continuation<T>> self,
             std::shared_ptr<FutureState<T>> const& completed) override {
        Promise<Result> promise(std::shared_ptr<FutureState<Result>>(std::move(self), this));
        Future<T> source(completed);
        if (!elsewhere) return Fulfil(promise, source);
        // An executor that drops the call drops the promise, which cancels the future.
        this->executor->CallAsync([this,
                                   promise = std::make_shared<Promise<Result>>(std::move(promise)),
                                   source = std::move(source)] { Fulfil(*promise, source); });
    }

private:
    void Fulfil(Promise<Result>& promise, Future<T> const& source) {
        try {
            if constexpr (std::is_void_v<Result>) {
                (*function)(source);
                promise.SetValue();
            } else {
                promise.SetValue((*function)(source));
            }
        } catch (...) {
            promise.SetException(std::current_exception());
        }
        function.reset();  // what it holds need not last as long as the result
    }

    bool const elsewhere;
    std::optional<Function> function;  // until it has run
};

/// A continuation of a T of which nothing is expected.
template <class T, class Function>
class Listener final : public Continuation<T> {
public:
    explicit Listener(Function function) : function(std::move(function)) {}

    void Run(std::shared_ptr<Continuation<T>> /*self*/,
             std::shared_ptr<FutureState<T>> const& completed) override {
        try {
            function(Future<T>(completed));
        } catch (...) {
        }
    }

private:
    Function function;
};

}  // namespace detail
}  // namespace moxcore::async
