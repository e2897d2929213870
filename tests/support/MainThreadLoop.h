#pragma once

#include <functional>

#include "moxcore/async/Future.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/MainThread.h"

namespace testsupport {

/// The main thread's loop of a test without windows.
class MainThreadLoop {
public:
    /// Returns once `done`, asked whenever something has run on the main thread, answers true.
    static void WaitUntil(std::function<bool()> const& done) {
        moxcore::threads::MainThread::RunUntil(done);
    }

    /// The future's value; throws what the operation failed with.
    template <class T>
    static T Await(moxcore::async::Future<T> const& future) {
        static_cast<void>(
            future.Then([](auto const&) { moxcore::threads::AsyncCallFromMainThread([] {}, 0); }));
        WaitUntil([&future] { return future.IsComplete(); });
        return future.Get();
    }
};

}  // namespace testsupport
