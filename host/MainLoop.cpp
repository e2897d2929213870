#include "host/MainLoop.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <utility>

#include "host/Failure.h"
#include "moxcore/threads/MainThread.h"

namespace quillohost {
namespace {

using moxcore::threads::MainThread;

/// Ends the thread that waits for signals; nobody else sends it.
constexpr int kStop = SIGUSR1;

sigset_t HandledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP, kStop})
        sigaddset(&signals, number);
    return signals;
}

}  // namespace

MainLoop::MainLoop() {
    signal(SIGPIPE, SIG_IGN);
    auto const signals = HandledSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // inherited by every thread made from now on
    MainThread::SetFailureHandler([this](std::exception_ptr const& thrown) { Fail(thrown); });
    signalThread = std::thread([this] { HandleSignals(); });
}

MainLoop::~MainLoop() {
    pthread_kill(signalThread.native_handle(), kStop);
    signalThread.join();
    MainThread::SetFailureHandler(nullptr);
}

void MainLoop::HandleSignals() {
    auto const signals = HandledSignals();
    bool interrupted = false;
    for (int number = 0; sigwait(&signals, &number) == 0 && number != kStop;) {
        if (interrupted) _exit(static_cast<int>(ExitCode::Interrupted));
        interrupted = true;
        Fail(std::make_exception_ptr(Failure(ExitCode::Interrupted, "Interrupted.")));
    }
}

void MainLoop::WaitUntil(std::function<bool()> const& done) {
    MainThread::RunUntil([&] { return failure || done(); });
    if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
}

void MainLoop::Fail(std::exception_ptr newFailure) {
    moxcore::threads::AsyncCallFromMainThread(
        [this, handedOver = std::move(newFailure)] {
            if (!failure) failure = handedOver;
        },
        0);
}

}  // namespace quillohost
