#pragma once

#include <functional>
#include <thread>

namespace quillohost {

/// Hears SIGINT, SIGTERM and SIGHUP on a thread of its own: the first one calls `onSignal` there, a
/// second one ends the process at once. Make one, before any other thread is started.
class SignalThread {
public:
    explicit SignalThread(std::function<void()> onSignal);
    ~SignalThread();
    SignalThread(SignalThread const&) = delete;
    SignalThread& operator=(SignalThread const&) = delete;

private:
    std::thread thread;
};

}  // namespace quillohost
