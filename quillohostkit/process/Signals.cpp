#include "quillohostkit/process/Signals.h"

namespace quillohostkit {

void GiveSignalsBack() noexcept {
    for (int number : kIdleSignals)
        signal(number, SIG_DFL);  // NOLINT(concurrency-mt-unsafe): alone in its process
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);  // NOLINT(concurrency-mt-unsafe): likewise
}

}  // namespace quillohostkit
