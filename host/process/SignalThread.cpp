#include "host/process/SignalThread.h"

#include <pthread.h>
#include <unistd.h>

#include <utility>

#include "host/process/ExitCode.h"
#include "quillohostkit/process/Signals.h"

namespace quillohost {
namespace {

/// Wakes the thread that waits for signals, so that it sees whether it is to end. Anybody may send
/// it.
constexpr int kWake = SIGUSR1;

/// Whether `number` is dealt with so: SIG_IGN or SIG_DFL.
bool Is(int number, sighandler_t disposition) {
    struct sigaction now {};
    return sigaction(number, nullptr, &now) == 0 && now.sa_handler == disposition;
}

sigset_t HandledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, kWake);
    sigaddset(&signals, SIGTERM);
    for (int number : {SIGINT, SIGHUP})
        if (!Is(number, SIG_IGN)) sigaddset(&signals, number);
    return signals;
}

void HandleSignals(sigset_t const& signals, std::atomic<bool> const& stopping,
                   std::function<void()> const& onSignal) {
    bool interrupted = false;
    while (!stopping) {
        int number = 0;
        if (sigwait(&signals, &number) != 0 || number == kWake) continue;
        if (interrupted) _exit(static_cast<int>(ExitCode::Interrupted));
        interrupted = true;
        onSignal();
    }
}

}  // namespace

SignalThread::SignalThread(std::function<void()> onSignal) {
    for (int number : quillohostkit::kIdleSignals)
        if (Is(number, SIG_DFL)) signal(number, SIG_IGN);
    // A file that may not grow is an error of the write, also in programs started from here.
    signal(SIGXFSZ, SIG_IGN);
    // Where a parent has it ignored, nobody learns that a program started from here has ended.
    signal(SIGCHLD, SIG_DFL);
    auto const signals = HandledSignals();
    // Inherited by every thread made from now on.
    pthread_sigmask(SIG_BLOCK, &signals, &maskBefore);
    thread = std::thread([this, signals, onSignal = std::move(onSignal)] {
        HandleSignals(signals, stopping, onSignal);
    });
}

SignalThread::~SignalThread() {
    stopping = true;
    pthread_kill(thread.native_handle(), kWake);
    thread.join();
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

}  // namespace quillohost
