#pragma once

#include <exception>
#include <functional>
#include <utility>

#include "host/process/SignalThread.h"
#include "moxcore/async/Future.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"

namespace quillohost {

/// The loop of a command: a command waits here for what it needs next, and meanwhile everything
/// that is queued for the main thread runs. SIGINT, SIGTERM and SIGHUP end the wait as a Failure
/// (Interrupted); a second one ends the process at once. Make one, before any thread is started.
/// Main thread.
class MainLoop {
public:
    MainLoop();
    ~MainLoop();
    MainLoop(MainLoop const&) = delete;
    MainLoop& operator=(MainLoop const&) = delete;

    /// Returns once `done`, asked whenever something has run on the main thread, answers true.
    /// Throws when the wait is interrupted, what Fail was given, and what a queued function threw.
    void WaitUntil(std::function<bool()> const& done);

    /// The future's value; throws as WaitUntil does, and what the operation failed with.
    template <class T>
    T Await(moxcore::async::Future<T> const& future) {
        static_cast<void>(
            future.Then([](auto const&) { moxcore::threads::AsyncCallFromMainThread([] {}, 0); }));
        WaitUntil([&future] { return future.IsComplete(); });
        return future.Get();
    }

    /// Has the wait that is under way, or the next one, throw `newFailure`. Any thread.
    void Fail(std::exception_ptr newFailure);

    /// `hook` runs when there is a failure that no wait has thrown yet: for callers that wait in
    /// another loop, such as an open dialog's. Empty for none.
    void SetFailureHook(std::function<void()> hook) { failureHook = std::move(hook); }

private:
    std::exception_ptr failure;         // main thread
    std::function<void()> failureHook;  // main thread
    SignalThread signals;
};

}  // namespace quillohost
