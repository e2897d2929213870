#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include "moxcore/async/Future.h"

namespace quilloauth {

/// One thread that runs functions in the order in which they are posted; they may wait there. It
/// is started by the first. Any thread.
class Worker {
public:
    Worker() = default;
    ~Worker() = default;
    Worker(Worker const&) = delete;
    Worker& operator=(Worker const&) = delete;

    /// Runs `function` on the thread. After Stop it is dropped.
    void Post(std::function<void()> function) { Add({std::move(function), false}); }

    /// The same for what must not get lost: Stop waits until it has run.
    void PostLasting(std::function<void()> function) { Add({std::move(function), true}); }

    /// Sleeps until `future` is complete; false when `stop` came first. On any thread.
    template <class T>
    [[nodiscard]] static bool WaitFor(moxcore::async::Future<T> const& future,
                                      std::stop_token const& stop) {
        auto const done = std::make_shared<Gate>();
        future.OnComplete([done](moxcore::async::Future<T> const&) { done->Open(); });
        return done->Wait(stop);
    }

    /// Asks to end what waits on the thread once Stop is called.
    [[nodiscard]] std::stop_token GetStopToken() const { return stopping.get_token(); }

    /// Ends the waits, lets the function that runs and the lasting ones come to their end, and
    /// drops the others.
    void Stop();

private:
    class Gate {
    public:
        void Open();
        [[nodiscard]] bool Wait(std::stop_token const& stop);

    private:
        std::mutex mutex;
        std::condition_variable_any opened;
        bool open = false;  // guarded by mutex
    };

    struct Function {
        std::function<void()> run;
        bool isLasting;
    };

    void Add(Function function);
    void Run();

    std::stop_source stopping;
    std::mutex mutex;
    std::condition_variable_any posted;
    std::deque<Function> functions;  // guarded by mutex
    std::jthread thread;             // guarded by mutex
};

}  // namespace quilloauth
