#pragma once

#include <cstddef>
#include <exception>
#include <functional>

#include "moxcore/Export.h"

namespace moxcore::threads {

/// The other end of AsyncCallFromMainThread: the host's loop runs here what was queued there. The
/// main thread is the one that first ran something here, until then the one that loaded the
/// library.
class MOXCORE_API MainThread {
public:
    /// Runs, in order, what was queued when the call began, and returns how many that were; what
    /// these queue in turn waits for the next call, so that a loop's other events are never
    /// starved. A function that throws is reported to the failure handler, and the rest still run.
    /// Main thread. A queued function may call it (a modal dialog's loop does): that call runs the
    /// rest of the outer call's functions first.
    static std::size_t RunPending();

    /// Runs what is queued, and sleeps while there is nothing, until `done` (asked before each
    /// sleep and after each round) answers true. Another thread that changes what `done` looks at
    /// wakes it by queueing a function. Main thread.
    static void RunUntil(std::function<bool()> const& done);

    /// `hook` is called, on the posting thread, each time the empty queue gets its first function
    /// (and here, when something is queued already): an event loop arranges there for RunPending to
    /// be called. It must not block, run the queue or call back into what posts: it is called under
    /// a lock of the poster's, a property's for instance. An empty function removes it; a call of
    /// the one before may still be under way on another thread then.
    static void SetWakeUpHook(std::function<void()> hook);

    /// Calls `handler`, on the main thread, with what queued functions throw; without one the
    /// failure observer is called. Main thread.
    static void SetFailureHandler(std::function<void(std::exception_ptr)> handler);

    /// For what a function has thrown where nobody can catch it, as in the event loop of a toolkit:
    /// calls the failure observer, from the queue, since a dialog cannot be shown at every
    /// moment. The program goes on. Any thread.
    static void ReportFailure(std::exception_ptr exception) noexcept;

    /// Calls `observer` with such failures on the main thread; it replaces the previous one.
    /// Without one, or when it throws, they are traced (category "moxcore"). Any thread; a call of
    /// the one before may still be under way.
    static void SetFailureObserver(std::function<void(std::exception_ptr)> observer);

    /// Whether the calling thread is the main one. Any thread.
    [[nodiscard]] static bool IsCurrent();
};

}  // namespace moxcore::threads
