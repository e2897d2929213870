#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace quillohost {

/// Hears SIGINT, SIGTERM and SIGHUP on a thread of its own: the first one calls `onSignal` there, a
/// second one ends the process at once. SIGINT and SIGHUP that were ignored when the process began
/// stay so, as `nohup` wants it. Signals that say nothing to this program, such as SIGUSR1 and
/// SIGPIPE, would end it without cleaning up; they are ignored. Make one, before any other thread
/// is started, and destroy it on the same thread.
class SignalThread {
public:
    explicit SignalThread(std::function<void()> onSignal);
    ~SignalThread();
    SignalThread(SignalThread const&) = delete;
    SignalThread& operator=(SignalThread const&) = delete;

private:
    sigset_t maskBefore{};
    std::atomic<bool> stopping = false;
    std::thread thread;
};

}  // namespace quillohost
