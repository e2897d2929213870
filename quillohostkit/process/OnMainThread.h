#pragma once

#include <memory>

#include "moxcore/async/Future.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/utility/LifetimeToken.h"

namespace quillohostkit {

/// Calls `continuation` with `future` on the main thread, never inside this call, once it is
/// complete; not when `owner` has ended by then. A result that comes after its owner's end is
/// released on the thread that it comes on, so that it holds nothing until the main thread has
/// time. Any thread.
template <class T, class Continuation>
void OnMainThread(moxcore::async::Future<T> const& future,
                  moxcore::utility::LifetimeToken const& owner, Continuation continuation) {
    static_cast<void>(future.Then([owner = owner.Watch(), continuation](auto const& complete) {
        if (owner.expired()) return;
        moxcore::threads::AsyncCallFromMainThread(
            [owner, continuation, complete] {
                if (auto const alive = owner.lock()) continuation(complete);
            },
            0);
    }));
}

}  // namespace quillohostkit
