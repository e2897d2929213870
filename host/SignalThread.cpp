#include "host/SignalThread.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <utility>

#include "host/Failure.h"

namespace quillohost {
namespace {

/// Ends the thread that waits for signals; nobody else sends it.
constexpr int kStop = SIGUSR1;

sigset_t HandledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP, kStop})
        sigaddset(&signals, number);
    return signals;
}

void HandleSignals(std::function<void()> const& onSignal) {
    auto const signals = HandledSignals();
    bool interrupted = false;
    for (int number = 0; sigwait(&signals, &number) == 0 && number != kStop;) {
        if (interrupted) _exit(static_cast<int>(ExitCode::Interrupted));
        interrupted = true;
        onSignal();
    }
}

}  // namespace

SignalThread::SignalThread(std::function<void()> onSignal) {
    auto const signals = HandledSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // inherited by every thread made from now on
    thread = std::thread([onSignal = std::move(onSignal)] { HandleSignals(onSignal); });
}

SignalThread::~SignalThread() {
    pthread_kill(thread.native_handle(), kStop);
    thread.join();
}

}  // namespace quillohost
