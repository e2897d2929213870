#include "quillocommon/WorkerThread.h"

#include <csignal>
#include <utility>

namespace quillocommon {

std::jthread StartWorkerThread(std::function<void(std::stop_token)> work) {
    // A new thread inherits the mask of the one that makes it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::jthread thread(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace quillocommon
